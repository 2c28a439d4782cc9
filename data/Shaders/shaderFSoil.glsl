#version 330
// Soil: earth and rock toned by noise on the object's own coordinates, darker
// hollows, and a wet sheen that dries with the object's age. A faint cold rim
// keeps its outline against a dark sky. Tone, hollows, light and rim all come
// from the vertex stage: a software rasteriser cannot afford noise a pixel
// for rocks that fill the screen.
#include "korvelLighting.glsl"
#include "korvelSurface.glsl"

in float soilTone;
in float soilHollow;
in vec2 soilLight;
in float soilRim;
in float soilWet;

void main()
{
    float n = soilTone;
    vec3 earth = mix(vec3(0.36, 0.28, 0.20), vec3(0.64, 0.55, 0.44), n);
    vec3 albedo = earth * (1.0 - 0.45 * soilHollow) * (1.0 - 0.3 * soilWet);
    vec3 color = albedo * soilLight.x + vec3(0.05 + 0.4 * soilWet) * soilLight.y;
    color += vec3(0.16, 0.2, 0.28) * soilRim;
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
