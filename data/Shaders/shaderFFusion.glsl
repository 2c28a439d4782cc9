#version 330
// Fusion beam: a translucent cone of energy whose bright rings run along it
// with the beam's age, brighter at its core where it is seen face-on and
// fading towards its wide end. Faintly lit so that it keeps its volume.
#include "korvelLighting.glsl"
#include "korvelSurface.glsl"

void main()
{
    vec3 n = normalize(worldNormal);
    vec3 toEye = normalize(camera - worldPosition);
    float facing = abs(dot(n, toEye));
    // The beam runs along the object's z axis, ten units long.
    float along = clamp(objectPosition.z / 10.0, 0.0, 1.0);
    float rings = pow(0.5 + 0.5 * sin((along * 12.0 - time * 3.0) * 6.2831853), 4.0);
    float swirl = 0.5 + 0.5 * sin((surfaceUV.x * 4.0 + time * 0.5) * 6.2831853);
    vec3 energy = mix(vec3(0.2, 0.5, 1.0), vec3(0.8, 0.95, 1.0), rings * facing);
    vec3 color = energy * (0.8 + 0.4 * swirl) + korvelShade(vec3(0.1, 0.2, 0.4), n, worldPosition, 4.0, vec3(0.5));
    float alpha = clamp((0.15 + 0.5 * rings + 0.2 * facing) * (1.0 - 0.7 * along), 0.0, 0.9);
    fragColor = korvelFog(color, alpha, eyeDistance);
}
