// Explosions: the growth law, the rescale about a fixed position before each
// step, and a revival that shrinks a large flash back at once.

#include "physics/Explosion.h"
#include "PhysicsTesting.h"

#include <gtest/gtest.h>

namespace {

using korvel::Explosion;
using physics_testing::AgedObject;
using physics_testing::expectVector;
using physics_testing::point;

void expectScale(const Explosion& e, float s)
{
    const Matrix4D& m = *e.getMatrixObject();
    expectVector(m.getColumn(0), s, 0, 0, 0, 1e-3f);
    expectVector(m.getColumn(1), 0, s, 0, 0, 1e-3f);
    expectVector(m.getColumn(2), 0, 0, s, 0, 1e-3f);
    expectVector(m.getColumn(3), 4, 5, 6, 1, 0);
}

TEST(ExplosionTest, GrowsFromNothingTowardsFiveHundred)
{
    const float ages[] = {0.0f, 0.1f, 0.2f, 1.0f, 100.0f};
    const float scales[] = {0.0f, 375.0f, 444.444f, 495.868f, 499.9995f};
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(Explosion::growth(ages[i]), scales[i], 1e-3f) << ages[i];
    }
}

TEST(ExplosionTest, RescalesAboutItsPositionEachStepAndShrinksBackWhenRevived)
{
    Explosion explosion;
    AgedObject flash;
    explosion.setIncarnation(&flash);
    explosion.setPosition(point(4, 5, 6));
    explosion.lifetime = 2.0f;
    explosion.alive();

    explosion.update(0.1f);
    expectScale(explosion, 0.0f);
    EXPECT_EQ(flash.lastAge, 0.0f) << "the age before the step";
    explosion.update(0.1f);
    expectScale(explosion, 375.0f);
    EXPECT_EQ(flash.lastAge, 0.1f);
    expectVector(flash.getWorldMax(), 4 + 375.0f, 5 + 375.0f, 6 + 375.0f, 1, 1e-3f);

    explosion.alive();
    expectScale(explosion, 1.0f);
    explosion.update(0.1f);
    expectScale(explosion, 0.0f);

    explosion.update(0.1f);
    explosion.die();
    explosion.update(0.1f);
    expectScale(explosion, 375.0f);
}

}  // namespace
