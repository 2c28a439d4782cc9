#version 330
in vec3 in_Position;
in vec3 in_Normal;
in vec2 in_UV;
uniform mat4 projection;
uniform mat4 modelview;
uniform mat4 refObject;
out vec2 uv;
void main()
{
    uv = in_UV + in_Normal.xy;
    gl_Position = projection * modelview * refObject * vec4(in_Position, 1.0);
}
