#version 330
// Explosion: a self-lit fireball, white at its heart where it is seen
// face-on, orange towards its soft edge, that cools to red and dark smoke as
// it ages and fades out. The smoke it leaves is shaded by the main light.
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
    float flicker = korvelNoise(vec3(worldPosition * 0.8 + vec3(0.0, 0.0, time * 6.0)));
    float heat = clamp(exp(-1.6 * time) * (0.55 + 0.5 * turbulence + 0.3 * flicker) * (0.35 + 0.75 * facing),
                       0.0, 1.0);
    vec3 fire = mix(vec3(0.85, 0.12, 0.02), vec3(1.0, 0.55, 0.08), smoothstep(0.15, 0.5, heat));
    fire = mix(fire, vec3(1.0, 0.95, 0.75), smoothstep(0.6, 0.95, heat));
    vec3 smoke = korvelShade(vec3(0.2, 0.18, 0.17), n, worldPosition, 1.0, vec3(0.0));
    vec3 color = mix(smoke, fire * 1.5, smoothstep(0.05, 0.3, heat));
    // Soft edges: the faceted outline of the sphere never shows.
    float alpha = clamp(pow(facing, 1.5) * (0.6 + 0.4 * heat) * exp(-0.8 * time), 0.0, 1.0);
    fragColor = korvelFog(color, alpha, eyeDistance);
}
