#version 330
// Laser bolt, read as raw sources (no definition file).
in vec3 in_Position;
in vec3 in_Normal;
in vec2 in_UV;

uniform mat4 projection;
uniform mat4 modelview;
uniform mat4 refObject;

out vec3 worldPosition;
out vec3 worldNormal;
out vec2 surfaceUV;
out float eyeDistance;

void main()
{
    vec4 world = refObject * vec4(in_Position, 1.0);
    vec4 eye = modelview * world;
    worldPosition = world.xyz;
    worldNormal = mat3(refObject) * in_Normal;
    surfaceUV = in_UV;
    eyeDistance = length(eye.xyz);
    gl_Position = projection * eye;
}
