#version 330
// Vertex stage of the lit, opaque materials.
#include "korvelSolid.glsl"

void main()
{
    korvelSolidVertex();
}
