#version 330
// Wood: growth rings around the object's vertical axis, distorted by noise,
// with a fine grain along the texture's v direction. Aged wood greys.
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"
#include "korvelSurface.glsl"

void main()
{
    vec3 p = objectPosition * 4.0;
    float radius = length(p.xz) + 0.6 * korvelNoise(p * 1.5);
    float rings = smoothstep(0.2, 0.8, fract(radius * 3.0));
    float grain = korvelNoise(vec3(surfaceUV.x * 60.0, surfaceUV.y * 4.0, p.y));
    vec3 early = vec3(0.62, 0.42, 0.24);
    vec3 late = vec3(0.40, 0.24, 0.12);
    vec3 albedo = mix(early, late, rings) * (0.85 + 0.3 * grain);
    // Weathering over the first ten minutes of an object's life.
    float weathered = clamp(time / 600.0, 0.0, 0.35);
    albedo = mix(albedo, vec3(0.45, 0.44, 0.42), weathered);
    vec3 color = korvelShade(albedo, worldNormal, worldPosition, 4.0, vec3(0.25));
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
