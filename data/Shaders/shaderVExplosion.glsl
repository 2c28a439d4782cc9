#version 330
// Explosion: the unit sphere boils, its surface pushed out by noise that
// churns with the flash's age.
#include "korvelVertex.glsl"
#include "korvelNoise.glsl"

uniform float time;

out float turbulence;

void main()
{
    vec3 direction = normalize(in_Normal);
    turbulence = korvelNoise(direction * 3.0 + vec3(in_UV, time * 2.0));
    korvelPlaceVertex(in_Position * (0.85 + 0.3 * turbulence));
}
