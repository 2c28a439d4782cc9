// Forces: aging and death, the fading blow and its edge
// cases, and the refusal of a time step that is not a number.

#include "physics/Force.h"
#include "physics/ForceBlow.h"
#include "PhysicsTesting.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace {

using korvel::Force;
using korvel::ForceBlow;
using physics_testing::direction;
using physics_testing::expectVector;
using physics_testing::point;

class DeathCounter : public Force {
public:
    void die() override
    {
        ++deaths;
        Force::die();
    }
    int deaths = 0;
};

TEST(ForceTest, AgesWhileAliveAndDiesOncePastItsLifetime)
{
    DeathCounter force;
    EXPECT_TRUE(force.update(0.5f));
    EXPECT_EQ(force.age, 0.0f) << "a dead force does not age";

    force.alive();
    force.lifetime = 0.5f;
    EXPECT_TRUE(force.update(0.25f));
    EXPECT_TRUE(force.update(0.25f));
    EXPECT_TRUE(force.isAlive) << "an age equal to the lifetime is still alive";
    EXPECT_TRUE(force.update(0.25f));
    EXPECT_FALSE(force.isAlive);
    EXPECT_EQ(force.deaths, 1) << "death goes through the virtual slot";
    EXPECT_FLOAT_EQ(force.age, 0.75f);

    force.alive();
    EXPECT_EQ(force.age, 0.0f);
}

TEST(ForceTest, ATimeStepThatIsNotANumberIsRefusedWithOneWarning)
{
    ForceBlow blow;
    blow.alive();
    blow.setAge(0.05f);
    CaptureStdout out;
    for (float dt : {std::nanf(""), std::numeric_limits<float>::infinity(), -0.02f}) {
        EXPECT_FALSE(blow.update(dt));
    }
    EXPECT_EQ(blow.age, 0.05f);
    const std::string text = out.text();
    EXPECT_EQ(text.rfind("[Warning] ForceBlow ", 0), 0u) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
    EXPECT_TRUE(blow.update(0.02f));
    EXPECT_FLOAT_EQ(blow.age, 0.07f);
}

TEST(ForceTest, BlowFadesLinearlyWithItsOwnAge)
{
    ForceBlow blow;
    blow.setBaseForce(direction(0, 3, 4), 10.0f);  // stored as (0, 0.6, 0.8)
    expectVector(blow.direction, 0, 0.6f, 0.8f, 0);
    struct Case {
        float lifetime;
        float age;
        bool result;
        float along;  // length of the force along the direction
    };
    const Case cases[] = {
        {1.0f, 0.0f, true, 10.0f},
        {1.0f, 0.25f, true, 7.5f},
        {0.1f, 0.1f, true, 0.0f},   // spent: the null vector
        {0.5f, 0.75f, true, -5.0f},  // older than its life, not yet killed: backwards
        {0.0f, 0.0f, false, 0.0f},   // no life: nothing, out untouched
    };
    for (const Case& c : cases) {
        blow.lifetime = c.lifetime;
        blow.setAge(c.age);
        Vector4D out(7, 7, 7, 7);
        EXPECT_EQ(blow.getForce(out, point(100, 0, 0), direction(0, 50, 0)), c.result) << c.lifetime << " " << c.age;
        if (c.result) {
            expectVector(out, 0, 0.6f * c.along, 0.8f * c.along, 0, 1e-5f);
        } else {
            expectVector(out, 7, 7, 7, 7);
        }
    }
}

}  // namespace
