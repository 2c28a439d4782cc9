#version 330
// Hull: brushed metal plates separated by dark seams, with running lights
// along the seams that pulse with the object's age.
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"
#include "korvelSurface.glsl"

void main()
{
    vec2 plate = fract(surfaceUV * vec2(8.0, 4.0));
    float seam = 1.0 - smoothstep(0.0, 0.03, min(min(plate.x, 1.0 - plate.x), min(plate.y, 1.0 - plate.y)));
    float brushed = korvelNoise(vec3(objectPosition.x * 200.0, objectPosition.y * 2.0, objectPosition.z * 2.0));
    float tone = korvelHash(vec3(floor(surfaceUV * vec2(8.0, 4.0)), 7.0));
    vec3 albedo = vec3(0.55, 0.58, 0.62) * (0.85 + 0.1 * brushed + 0.1 * tone);
    albedo = mix(albedo, vec3(0.08), seam);
    vec3 color = korvelShade(albedo, worldNormal, worldPosition, 16.0, vec3(0.9));
    float pulse = 0.5 + 0.5 * sin(time * 3.0);
    color += vec3(0.1, 0.5, 1.0) * seam * pulse * 0.6;
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
