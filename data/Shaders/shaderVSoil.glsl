#version 330
// Vertex stage of Soil. Rocks can fill the screen, and a software rasteriser
// pays for every noise octave and every light term once a pixel; on a rock's
// dense, rounded mesh the noise, the lighting and the rim are as good worked
// out once a corner and blended across the faces.
#include "korvelVertex.glsl"
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"

uniform float time;

out float soilTone;
out float soilHollow;
out vec2 soilLight;
out float soilRim;
out float soilWet;

void main()
{
    korvelPlaceVertex();
    vec3 p = in_Position * 0.5;
    // Grit: each cell of the surface's own mapping tilts its tone a little.
    float grit = korvelHash(vec3(floor(in_UV * 24.0), 3.0)) - 0.5;
    soilTone = 0.6 * korvelNoise(p) + 0.4 * korvelNoise(p * 2.7) + 0.12 * grit;
    soilHollow = smoothstep(0.55, 0.75, korvelNoise(p * 1.3 + vec3(5.0)));
    soilWet = 0.3 * exp(-0.05 * time);
    soilLight = korvelLight(worldNormal, worldPosition, 1.0 + 8.0 * soilWet);
    vec3 toEye = normalize(camera - worldPosition);
    soilRim = pow(1.0 - abs(dot(normalize(worldNormal), toEye)), 3.0);
}
