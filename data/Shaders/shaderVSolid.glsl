#version 330
// Vertex stage of the lit, opaque materials.
#include "korvelVertex.glsl"

void main()
{
    korvelPlaceVertex();
}
