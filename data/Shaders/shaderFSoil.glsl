#version 330
// Soil: earth and rock with a few octaves of noise laid on the object's own
// coordinates (models of shared points carry no texture coordinates), darker
// hollows, pebbles where there are texture coordinates, and a wet sheen that
// dries with the object's age. A faint cold rim keeps its outline against a
// dark sky.
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"
#include "korvelSurface.glsl"

void main()
{
    vec3 p = objectPosition * 0.5;
    float n = 0.5 * korvelNoise(p) + 0.3 * korvelNoise(p * 2.7) + 0.2 * korvelNoise(p * 7.1);
    float hollow = smoothstep(0.55, 0.75, korvelNoise(p * 1.3 + vec3(5.0)));
    vec3 earth = mix(vec3(0.36, 0.28, 0.20), vec3(0.64, 0.55, 0.44), n);
    // Pebbles where the model has texture coordinates to lay them out.
    vec2 cell = fract(surfaceUV * 24.0) - 0.5;
    float pebble = (1.0 - smoothstep(0.18, 0.26, length(cell)))
        * step(0.7, korvelHash(vec3(floor(surfaceUV * 24.0), 3.0)));
    vec3 albedo = mix(earth * (1.0 - 0.45 * hollow), vec3(0.55, 0.53, 0.50), pebble);
    float wet = 0.3 * exp(-0.05 * time);
    vec3 color = korvelShade(albedo * (1.0 - 0.3 * wet), worldNormal, worldPosition, 1.0 + 8.0 * wet,
                             vec3(0.05 + 0.4 * wet));
    vec3 toEye = normalize(camera - worldPosition);
    float rim = pow(1.0 - abs(dot(normalize(worldNormal), toEye)), 3.0);
    color += vec3(0.16, 0.2, 0.28) * rim;
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
