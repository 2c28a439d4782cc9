#version 330
// Leaves sway in a breeze that runs with the object's age; the texture's v
// coordinate (0 at the stem) sets how far a vertex moves.
#include "korvelVertex.glsl"

uniform float time;

void main()
{
    float phase = time * 2.0 + dot(in_Position, vec3(1.3, 0.7, 2.1));
    korvelPlaceVertex(in_Position + in_Normal * (0.04 * in_UV.y * sin(phase)));
}
