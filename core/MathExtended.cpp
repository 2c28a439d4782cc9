#include "core/MathExtended.h"

#include <cmath>
#include <cstdint>
#include <cstring>

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

// A float is an infinity or a NaN when its exponent bits are all set. Tested
// on the bits, without a branch or a dependent chain per value: bodies check
// their whole state every step.
bool MathExtended::allFinite(const float* values, int count)
{
    constexpr uint32_t exponent = 0x7f800000u;
    uint32_t bad = 0;
    for (int i = 0; i < count; ++i) {
        uint32_t bits;
        std::memcpy(&bits, &values[i], sizeof bits);
        bad |= static_cast<uint32_t>((bits & exponent) == exponent);
    }
    return bad == 0;
}

}  // namespace korvel
