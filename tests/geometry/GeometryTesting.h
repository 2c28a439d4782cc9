#pragma once
// Small helpers shared by the geometry tests.

#include "core/Vector4D.h"

#include <cstdlib>

inline Vector4D pt(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

// A float drawn uniformly from [lo, hi] with std::rand, so that a seed
// given to std::srand makes a run repeatable.
inline float uniform(float lo, float hi)
{
    return lo + (hi - lo) * static_cast<float>(static_cast<double>(std::rand()) / RAND_MAX);
}

// A line test independent of the engine's: the line O + sD meets the plane
// of (a, b, c), and the meeting point lies inside by barycentric
// coordinates. False for a line parallel to the plane.
inline bool crossesByBarycentre(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Vector4D& o,
                                const Vector4D& d)
{
    const Vector4D n = (b - a).pvect3D(c - a);
    if (n.scal3D(d) == 0.0f) {
        return false;
    }
    const Vector4D p = o + d * (n.scal3D(a - o) / n.scal3D(d));
    const float area = n.scal3D(n);
    const float u = n.scal3D((c - b).pvect3D(p - b)) / area;
    const float v = n.scal3D((a - c).pvect3D(p - c)) / area;
    return u >= 0 && v >= 0 && u + v <= 1;
}
