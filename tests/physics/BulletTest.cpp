// Bullets: the frame that fire builds from the shot's direction, with the
// column-1 overwrite kept, and the revival it brings.

#include "physics/Bullet.h"
#include "PhysicsTesting.h"

#include <gtest/gtest.h>

namespace {

using korvel::Bullet;
using physics_testing::direction;
using physics_testing::expectVector;
using physics_testing::point;

TEST(BulletTest, FireBuildsTheFrameFromTheDirectionAndRevivesTheShot)
{
    struct Case {
        Vector4D velocity;
        Vector4D up;
        Vector4D column0;  // up x d, not normalised
        Vector4D column1;  // d itself: the d x column-0 vector is overwritten
    };
    const Case cases[] = {
        {direction(0, 0, -200), direction(0, 1, 0), direction(-1, 0, 0), direction(0, 0, -1)},
        {direction(30, 0, 0), direction(0, 2, 0), direction(0, 0, -2), direction(1, 0, 0)},
        {direction(0, 5, 0), direction(0, 2, 0), direction(0, 0, 0), direction(0, 1, 0)},  // parallel
    };
    for (const Case& c : cases) {
        Bullet bullet;
        korvel::IObject3D beam;
        bullet.setIncarnation(&beam);
        beam.hide();
        bullet.age = 4.0f;
        bullet.getMatrixObjectChange()->enlarge(3.0f);

        EXPECT_TRUE(bullet.fire(point(1, 2, 3), c.velocity, c.up));
        const Matrix4D& m = *bullet.getMatrixObject();
        expectVector(m.getColumn(0), c.column0.x, c.column0.y, c.column0.z, 0);
        expectVector(m.getColumn(1), c.column1.x, c.column1.y, c.column1.z, 0);
        expectVector(m.getColumn(2), 0, 0, 1, 0);
        expectVector(m.getColumn(3), 1, 2, 3, 1);
        expectVector(bullet.speed, c.velocity.x, c.velocity.y, c.velocity.z, 0);
        EXPECT_TRUE(bullet.isAlive);
        EXPECT_EQ(bullet.age, 0.0f);
        EXPECT_TRUE(beam.isVisible());
    }
}

}  // namespace
