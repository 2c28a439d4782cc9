#version 330
// Soil: dark earth with a few octaves of noise, pebbles laid by the texture
// coordinates, and a wet sheen that dries with the object's age.
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"
#include "korvelSurface.glsl"

void main()
{
    vec3 p = objectPosition * 6.0;
    float n = 0.5 * korvelNoise(p) + 0.3 * korvelNoise(p * 2.7) + 0.2 * korvelNoise(p * 7.1);
    vec2 cell = fract(surfaceUV * 24.0) - 0.5;
    float pebble = (1.0 - smoothstep(0.18, 0.26, length(cell)))
        * step(0.7, korvelHash(vec3(floor(surfaceUV * 24.0), 3.0)));
    vec3 earth = mix(vec3(0.22, 0.15, 0.09), vec3(0.38, 0.28, 0.17), n);
    vec3 albedo = mix(earth, vec3(0.55, 0.53, 0.50), pebble);
    float wet = exp(-0.05 * time);
    vec3 color = korvelShade(albedo * (1.0 - 0.3 * wet), worldNormal, worldPosition, 1.0 + 8.0 * wet,
                             vec3(0.05 + 0.4 * wet));
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
