#pragma once
// The engine's random draws, a deterministic hash of a point and a lattice
// value noise built on it. Draws come from std::rand(), which only tests seed.

#include "core/Vector4D.h"

namespace korvel {

class Random {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    virtual ~Random() = default;
    virtual const char* getInstanceClassName() const { return className; }

    // Every range is closed: both ends can come out.
    static float aleaFloatZeroOne();
    static float aleaFloatMinusOneOne();
    static float aleaFloatZeroRange(float r);
    static float aleaFloatMinusRangeRange(float r);

    // Same point and seed, same value, in (-1, 1).
    static float aleaPoint(const Vector4D& p, int seed);
    // Trilinear blend of the hashes of the cell corners around p; cells are
    // size wide on each axis. A size of 0 is refused with a log line and 0.
    static float noise(const Vector4D& p, int size, int seed);

private:
    // A value in [0, 32767] whatever the platform's RAND_MAX.
    static int draw15();
};

}  // namespace korvel
