#version 330
// Explosion: a self-lit fireball, white at its heart where it is seen
// face-on, orange towards its soft edge, that cools to red and dark smoke as
// it ages and fades out. The boiling comes from the vertex stage, so that a
// fireball filling the screen costs little per pixel.
#include "korvelLighting.glsl"

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
    float facing = abs(dot(n, normalize(camera - worldPosition)));
    float alpha = clamp(facing * sqrt(facing) * exp(-0.8 * time), 0.0, 1.0);
    if (alpha < 0.01) {
        discard;
    }
    float heat = clamp(exp(-1.6 * time) * (0.6 + 0.8 * turbulence) * (0.35 + 0.75 * facing), 0.0, 1.0);
    vec3 fire = mix(vec3(0.85, 0.12, 0.02), vec3(1.0, 0.55, 0.08), smoothstep(0.15, 0.5, heat));
    fire = mix(fire, vec3(1.0, 0.95, 0.75), smoothstep(0.6, 0.95, heat));
    // The smoke left behind, lit by the main light alone.
    vec3 smoke = vec3(0.2, 0.18, 0.17) * (phong.x + phong.y * max(dot(n, -normalize(light)), 0.0));
    vec3 color = mix(smoke, fire * 1.5, smoothstep(0.05, 0.3, heat));
    fragColor = korvelFog(color, alpha * (0.6 + 0.4 * heat), eyeDistance);
}
