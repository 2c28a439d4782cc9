#version 330
// Vertex stage of the translucent, unlit or lightly lit effects.
#include "korvelVertex.glsl"

void main()
{
    korvelPlaceVertex();
}
