#pragma once
// Helpers shared by the physics tests: vector checks and an incarnation that
// remembers the age it was given.

#include "core/Vector4D.h"
#include "scene/IObject3D.h"

#include <gtest/gtest.h>

namespace physics_testing {

inline void expectVector(const Vector4D& v, float x, float y, float z, float w, float tolerance = 1e-6f)
{
    EXPECT_NEAR(v.x, x, tolerance);
    EXPECT_NEAR(v.y, y, tolerance);
    EXPECT_NEAR(v.z, z, tolerance);
    EXPECT_NEAR(v.w, w, tolerance);
}

inline Vector4D point(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

inline Vector4D direction(float x, float y, float z)
{
    return Vector4D(x, y, z, 0.0f);
}

class AgedObject : public korvel::IObject3D {
public:
    void setAge(float a) override { lastAge = a; }
    float lastAge = -1.0f;
};

}  // namespace physics_testing
