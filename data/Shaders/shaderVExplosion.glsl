#version 330
// Explosion: the unit sphere boils, its surface pushed out by noise that
// churns with the flash's age.
#include "korvelNoise.glsl"

in vec3 in_Position;
in vec3 in_Normal;
in vec2 in_UV;

uniform mat4 projection;
uniform mat4 modelview;
uniform mat4 refObject;
uniform float time;

out vec3 worldPosition;
out vec3 worldNormal;
out vec2 surfaceUV;
out float eyeDistance;
out float turbulence;

void main()
{
    vec3 direction = normalize(in_Normal);
    turbulence = korvelNoise(direction * 3.0 + vec3(in_UV, time * 2.0));
    vec3 position = in_Position * (0.85 + 0.3 * turbulence);
    vec4 world = refObject * vec4(position, 1.0);
    vec4 eye = modelview * world;
    worldPosition = world.xyz;
    worldNormal = mat3(refObject) * in_Normal;
    surfaceUV = in_UV;
    eyeDistance = length(eye.xyz);
    gl_Position = projection * eye;
}
