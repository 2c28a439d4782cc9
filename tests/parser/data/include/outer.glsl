0123456789abcdefghij
#include "one.glsl"
