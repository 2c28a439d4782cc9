#version 330
// Hull: brushed metal plates separated by dark seams, with running lights
// along the seams that pulse with the object's age. The plates follow the
// texture coordinates when the model has them; models made of shared points
// have none, and get them laid on the object's own coordinates, across
// whichever axis the surface faces most.
#include "korvelLighting.glsl"
#include "korvelNoise.glsl"
#include "korvelSurface.glsl"

void main()
{
    vec3 facing = abs(normalize(cross(dFdx(objectPosition), dFdy(objectPosition))));
    vec2 across = facing.x > facing.y && facing.x > facing.z ? objectPosition.zy
                : facing.y > facing.z ? objectPosition.xz : objectPosition.xy;
    vec2 cells = across * vec2(2.5, 4.0);
    if (surfaceUV != vec2(0.0)) {
        cells = surfaceUV * vec2(8.0, 4.0);
    }
    vec2 plate = fract(cells);
    float seam = 1.0 - smoothstep(0.0, 0.05, min(min(plate.x, 1.0 - plate.x), min(plate.y, 1.0 - plate.y)));
    float brushed = korvelNoise(vec3(objectPosition.x * 40.0, objectPosition.y * 2.0, objectPosition.z * 2.0));
    float tone = korvelHash(vec3(floor(cells), 7.0));
    vec3 albedo = vec3(0.55, 0.58, 0.62) * (0.8 + 0.15 * brushed + 0.15 * tone);
    albedo = mix(albedo, vec3(0.08), seam);
    vec3 color = korvelShade(albedo, worldNormal, worldPosition, 16.0, vec3(0.9));
    float pulse = 0.5 + 0.5 * sin(time * 3.0);
    color += vec3(0.1, 0.5, 1.0) * seam * pulse * 0.6;
    fragColor = korvelFog(color, 1.0, eyeDistance);
}
