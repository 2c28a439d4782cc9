#include "core/MathExtended.h"

#include <cmath>

namespace korvel {

const char* MathExtended::className = "MathExtended";
const float MathExtended::invLog2 = 1.4426950f;

float MathExtended::lerp(float a, float b, float t)
{
    return a * (1.0f - t) + t * b;
}

void MathExtended::lerp(Vector4D& out, const Vector4D& a, const Vector4D& b, float t)
{
    out.setCoord(lerp(a.x, b.x, t), lerp(a.y, b.y, t), lerp(a.z, b.z, t), 1.0f);
}

float MathExtended::fade(float t)
{
    return t * t * t * (t * (t * 6.0f - 15.0f) + 10.0f);
}

void MathExtended::fade(Vector4D& v)
{
    v.x = fade(v.x);
    v.y = fade(v.y);
    v.z = fade(v.z);
}

float MathExtended::log2(float x)
{
    return static_cast<float>(std::log(static_cast<double>(x)) * invLog2);
}

}  // namespace korvel
