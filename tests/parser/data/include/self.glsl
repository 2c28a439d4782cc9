#include "self.glsl"
