aaaaaaaaaaaaaaaaaaaaaaaaa#include "cycB.glsl"
