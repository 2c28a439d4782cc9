bbbbbbbbbbbbbbbbbbbbbbbbb#include "cycA.glsl"
