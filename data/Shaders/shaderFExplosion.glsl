#version 330
// Explosion: a self-lit fireball that cools from white through orange to
// dark smoke as it ages, brightest where it is seen face-on, and fades out.
// The smoke it leaves is shaded by the main light.
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"

uniform float time;

in vec3 worldPosition;
in vec3 worldNormal;
in vec2 surfaceUV;
in float eyeDistance;
in float turbulence;

out vec4 fragColor;

void main()
{
    vec3 n = normalize(worldNormal);
    vec3 toEye = normalize(camera - worldPosition);
    float facing = abs(dot(n, toEye));
    float flicker = korvelNoise(vec3(surfaceUV * 12.0, time * 6.0));
    float heat = clamp(exp(-2.5 * time) * (0.6 + 0.6 * turbulence + 0.3 * flicker) * (0.4 + 0.6 * facing), 0.0, 1.0);
    vec3 fire = mix(vec3(0.9, 0.15, 0.02), vec3(1.0, 0.65, 0.1), smoothstep(0.2, 0.6, heat));
    fire = mix(fire, vec3(1.0, 0.97, 0.85), smoothstep(0.7, 1.0, heat));
    vec3 smoke = korvelShade(vec3(0.18, 0.16, 0.15), n, worldPosition, 1.0, vec3(0.0));
    vec3 color = mix(smoke, fire * 1.6, smoothstep(0.05, 0.35, heat));
    float alpha = clamp((0.35 + 0.65 * facing) * exp(-1.2 * time), 0.0, 1.0);
    fragColor = korvelFog(color, alpha, eyeDistance);
}
