#version 330
#include "colour.glsl"
in vec2 uv;
out vec4 fragColor;
void main()
{
    fragColor = vec4(includedColour(uv), 1.0);
}
