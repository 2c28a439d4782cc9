#version 330
// Leaves sway in a breeze that runs with the object's age; the texture's v
// coordinate (0 at the stem) sets how far a vertex moves.
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

void main()
{
    vec3 position = in_Position;
    float phase = time * 2.0 + dot(in_Position, vec3(1.3, 0.7, 2.1));
    position += in_Normal * (0.04 * in_UV.y * sin(phase));
    vec4 world = refObject * vec4(position, 1.0);
    vec4 eye = modelview * world;
    worldPosition = world.xyz;
    worldNormal = mat3(refObject) * in_Normal;
    surfaceUV = in_UV;
    eyeDistance = length(eye.xyz);
    gl_Position = projection * eye;
}
