#include "one.glsl"
near
