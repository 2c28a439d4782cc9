#include "core/Random.h"

#include "core/MathExtended.h"

#include <cmath>
#include <cstdlib>
#include <iostream>

namespace korvel {

const char* Random::className = "Random";

namespace {

constexpr double drawMax = 32767.0;
constexpr double pi = 3.14159265358979323846;

}  // namespace

int Random::draw15()
{
    // glibc's RAND_MAX is 2^31 - 1: its high 15 bits give the 0..32767 draws
    // the ranges below are scaled for. Elsewhere, fold into the same range.
    static_assert(RAND_MAX >= 32767, "std::rand() must give at least 15 bits");
    if constexpr (RAND_MAX == 2147483647) {
        return std::rand() >> 16;
    } else {
        return std::rand() & 0x7fff;
    }
}

float Random::aleaFloatZeroOne()
{
    return static_cast<float>(draw15() / drawMax);
}

float Random::aleaFloatMinusOneOne()
{
    return static_cast<float>(2.0 * (draw15() / drawMax - 0.5));
}

float Random::aleaFloatZeroRange(float r)
{
    return static_cast<float>(r * (draw15() / drawMax));
}

float Random::aleaFloatMinusRangeRange(float r)
{
    return static_cast<float>(r * 2.0 * (draw15() / drawMax - 0.5));
}

float Random::aleaPoint(const Vector4D& p, int seed)
{
    const Vector4D a = p + Vector4D(1.5f, 10.1f, 7.8f, 1.0f);
    const Vector4D k(12.9898f, 78.233f, 88.3535f, 1.0f);
    const float d = a.scal3D(k);
    const double s = std::sin(std::fmod(static_cast<double>(d), pi) + 1.3156);
    // fmod keeps the sign of s, so negative hashes come out too.
    return static_cast<float>(std::fmod(s * ((seed + 1) * 43758.5453), 1.0));
}

float Random::noise(const Vector4D& p, int size, int seed)
{
    if (size == 0) {
        std::cout << "[Warning] Random::noise: a cell size of 0 has no lattice, noise is 0" << std::endl;
        return 0.0f;
    }
    Vector4D corner(p);
    corner.floorBase(size);
    Vector4D f(p);
    f.fractBase(size);
    MathExtended::fade(f);

    const float step = static_cast<float>(size);
    float value[2][2][2];
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) {
            for (int k = 0; k < 2; ++k) {
                const Vector4D at = corner + Vector4D(i * step, j * step, k * step, 0.0f);
                value[i][j][k] = aleaPoint(at, seed);
            }
        }
    }
    // Along x, then y, then z.
    const float x00 = MathExtended::lerp(value[0][0][0], value[1][0][0], f.x);
    const float x10 = MathExtended::lerp(value[0][1][0], value[1][1][0], f.x);
    const float x01 = MathExtended::lerp(value[0][0][1], value[1][0][1], f.x);
    const float x11 = MathExtended::lerp(value[0][1][1], value[1][1][1], f.x);
    const float y0 = MathExtended::lerp(x00, x10, f.y);
    const float y1 = MathExtended::lerp(x01, x11, f.y);
    return MathExtended::lerp(y0, y1, f.z);
}

}  // namespace korvel
