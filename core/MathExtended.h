#pragma once
// Interpolation helpers of the noise, a base-2 logarithm, and the finiteness
// test of the vectors and matrices.

#include "core/Vector4D.h"

namespace korvel {

class MathExtended {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    static const float invLog2;  // 1 / ln 2

    virtual ~MathExtended() = default;
    virtual const char* getInstanceClassName() const { return className; }

    static float lerp(float a, float b, float t);
    // out = lerp of x, y, z, with w set to 1.
    static void lerp(Vector4D& out, const Vector4D& a, const Vector4D& b, float t);
    // Quintic smooth step: 0 at 0, 1 at 1, flat first and second derivatives.
    static float fade(float t);
    static void fade(Vector4D& v);  // x, y, z in place
    static float log2(float x);
    // No value among count is an infinity or a NaN.
    static bool allFinite(const float* values, int count);
};

}  // namespace korvel
