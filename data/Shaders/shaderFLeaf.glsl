#version 330
// Leaf: green blade with a central vein and side veins, lighter at the tip,
// with light shining through when seen against it.
#include "korvelLighting.glsl"

in vec3 worldPosition;
in vec3 worldNormal;
in vec2 surfaceUV;
in float eyeDistance;

out vec4 fragColor;

void main()
{
    float across = surfaceUV.x - 0.5;
    float midrib = 1.0 - smoothstep(0.0, 0.02, abs(across));
    float side = 1.0 - smoothstep(0.0, 0.06, abs(fract(surfaceUV.y * 8.0 - abs(across) * 3.0) - 0.5));
    float veins = max(midrib, side * 0.5);
    vec3 albedo = mix(vec3(0.10, 0.35, 0.08), vec3(0.35, 0.60, 0.15), surfaceUV.y);
    albedo = mix(albedo, vec3(0.55, 0.70, 0.30), veins);
    vec3 color = korvelShade(albedo, worldNormal, worldPosition, 2.0, vec3(0.15));
    vec3 toEye = normalize(camera - worldPosition);
    float through = max(dot(toEye, normalize(light)), 0.0);
    color += albedo * phong.y * 0.35 * through;
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
