#pragma once
// Small helpers shared by the geometry tests.

#include "core/Vector4D.h"

#include <algorithm>
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

// Where the line O + sD meets the plane of (a, b, c), computed independently
// of the engine: the smallest barycentric coordinate of the meeting point,
// positive inside the triangle, negative outside; -1 for a line parallel to
// the plane.
inline float barycentricMargin(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Vector4D& o,
                               const Vector4D& d)
{
    const Vector4D n = (b - a).pvect3D(c - a);
    if (n.scal3D(d) == 0.0f) {
        return -1.0f;
    }
    const Vector4D p = o + d * (n.scal3D(a - o) / n.scal3D(d));
    const float area = n.scal3D(n);
    const float u = n.scal3D((c - b).pvect3D(p - b)) / area;
    const float v = n.scal3D((a - c).pvect3D(p - c)) / area;
    return std::min({u, v, 1.0f - u - v});
}
