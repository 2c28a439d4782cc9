// Enemies: the random spin of a new rock, wear that time never changes, the
// re-armed blow that sits in two slots, and the reset before a respawn.

#include "core/Random.h"
#include "physics/Enemy.h"
#include "PhysicsTesting.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using korvel::Enemy;
using korvel::Random;
using physics_testing::direction;
using physics_testing::expectVector;
using physics_testing::point;

TEST(EnemyTest, SpinTakesThreeDrawsInReverseOrder)
{
    std::srand(11);
    const float d1 = Random::aleaFloatMinusOneOne();
    const float d2 = Random::aleaFloatMinusOneOne();
    const float d3 = Random::aleaFloatMinusOneOne();
    ASSERT_NE(d1, d3);
    std::srand(11);
    Enemy enemy;
    expectVector(enemy.cineticMoment, d3, d2, d1, 0, 0);
}

TEST(EnemyTest, StepsKeepTheWearWhichKillsOnlyOnceItPassesTheLifetime)
{
    Enemy enemy;
    enemy.cineticMoment.setNull();
    enemy.speed = direction(1, 0, 0);
    enemy.lifetime = 1.0f;
    enemy.alive();
    enemy.age = 0.625f;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(enemy.update(0.25f));
    }
    EXPECT_TRUE(enemy.isAlive);
    EXPECT_EQ(enemy.age, 0.625f);
    EXPECT_FLOAT_EQ(enemy.getPosition().x, 1.0f);

    enemy.age = 0.875f;  // worn: the step's own time tips it over
    enemy.update(0.25f);
    EXPECT_FALSE(enemy.isAlive);
    EXPECT_EQ(enemy.age, 0.875f);
    EXPECT_FLOAT_EQ(enemy.getPosition().x, 1.0f);
}

TEST(EnemyTest, BlowReArmedBeforeItDiesCountsInTwoSlots)
{
    Enemy enemy;
    enemy.cineticMoment.setNull();
    enemy.lifetime = 10.0f;
    enemy.alive();
    enemy.setPosition(point(0, 0, 5));

    // Pushed away from the point of impact.
    EXPECT_TRUE(enemy.blow(point(0, 0, 2), 4.0f));
    korvel::ForceBlow& blow = enemy.getBlowForce();
    expectVector(blow.direction, 0, 0, 1, 0);
    EXPECT_EQ(blow.lifetime, 0.1f);
    EXPECT_FLOAT_EQ(enemy.age, 0.3f);

    blow.update(0.0625f);
    EXPECT_TRUE(enemy.blow(point(1, 0, 5), 6.0f, direction(3, 0, 0)));
    EXPECT_EQ(enemy.getSlotForce(0), &blow);
    EXPECT_EQ(enemy.getSlotForce(1), &blow);
    expectVector(blow.direction, 1, 0, 0, 0);
    EXPECT_FLOAT_EQ(enemy.age, 0.6f);

    // f = (6, 0, 0), twice per slot with a point, two slots: 24 along x.
    // Torque: (0, 0, -3) x f from slot 0, (1, 0, 0) x f = 0 from slot 1.
    enemy.update(0.125f);
    expectVector(enemy.speed, 3, 0, 0, 0, 0);
    expectVector(enemy.getPosition(), 0.1875f, 0, 5, 1, 0);
    expectVector(enemy.cineticMoment, 0, -2.25f, 0, 0, 0);

    blow.update(0.125f);
    enemy.update(0.125f);
    EXPECT_EQ(enemy.getSlotForce(0), nullptr);
    EXPECT_EQ(enemy.getSlotForce(1), nullptr);
    EXPECT_TRUE(blow.released);
}

TEST(EnemyTest, CleanupResetsMassInertiaAndMotion)
{
    Enemy enemy;
    enemy.mass = 7.0f;
    enemy.momentOfInertia = 70.0f;
    enemy.speed = direction(1, 2, 3);
    enemy.acceleration = direction(4, 5, 6);
    enemy.dynamicMoment = direction(7, 8, 9);
    enemy.cleanup();
    EXPECT_EQ(enemy.mass, 1.0f);
    EXPECT_EQ(enemy.momentOfInertia, 1.0f);
    for (const Vector4D* v : {&enemy.speed, &enemy.acceleration, &enemy.dynamicMoment, &enemy.cineticMoment}) {
        expectVector(*v, 0, 0, 0, 0, 0);
    }
}

}  // namespace
