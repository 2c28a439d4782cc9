#version 330
#include "absent.glsl"
out vec4 c;
void main() { c = vec4(1.0); }
