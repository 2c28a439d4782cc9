// Bodies: the integration against motion worked out by hand, the force
// slots, life and death, the incarnation that follows, and steps that cannot
// be computed.

#include "physics/ForceBlow.h"
#include "physics/ForceField.h"
#include "physics/Fusion.h"
#include "physics/PhysicalObject.h"
#include "PhysicsTesting.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

namespace {

using korvel::ForceBlow;
using korvel::ForceField;
using korvel::IObject3D;
using korvel::PhysicalObject;
using physics_testing::AgedObject;
using physics_testing::direction;
using physics_testing::expectVector;
using physics_testing::point;

void expectSameMatrix(const Matrix4D& a, const Matrix4D& b)
{
    for (int c = 0; c < 4; ++c) {
        const Vector4D x = a.getColumn(c);
        const Vector4D y = b.getColumn(c);
        EXPECT_TRUE(x.x == y.x && x.y == y.y && x.z == y.z && x.w == y.w) << "column " << c;
    }
}

int lineCount(const std::string& text)
{
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

// Bodies and forces alike.
template <typename Living>
void liveFor(Living& living, float lifetime)
{
    living.lifetime = lifetime;
    living.alive();
}

// Under a constant force F the position must follow F t^2 / 2m exactly, which
// only happens when each step moves with the old speed before taking the new
// acceleration. A force given with a point counts twice.
TEST(PhysicalObjectTest, ConstantForceMovesByHalfATSquaredAndCountsTwiceWithAPoint)
{
    for (const bool withPoint : {false, true}) {
        ForceField field;
        liveFor(field, 1e9f);
        field.setBaseForce(direction(3.0f, 0.0f, -1.5f));
        PhysicalObject body;
        body.mass = 2.0f;
        liveFor(body, 100.0f);
        body.setPosition(point(1, 2, 3));
        ASSERT_TRUE(withPoint ? body.addForce(&field, point(1, 2, 3)) : body.addForce(&field));

        for (int i = 0; i < 40; ++i) {
            ASSERT_TRUE(body.update(0.125f));
        }
        // t = 5 s, a = k F / m with k = 1 or 2: x = 1 + 18.75 k, z = 3 - 9.375 k.
        const float k = withPoint ? 2.0f : 1.0f;
        SCOPED_TRACE(withPoint ? "with a point" : "without a point");
        expectVector(body.getPosition(), 1 + 18.75f * k, 2, 3 - 9.375f * k, 1, 0);
        expectVector(body.speed, 7.5f * k, 0, -3.75f * k, 0, 0);
        // The point lies on the line of the force: no torque.
        expectVector(body.cineticMoment, 0, 0, 0, 0, 0);
    }
}

// A blow of intensity 8 and life 1 s, updated before the body as the game
// does, pushes along x at (0, 1, 0) with 7, 6, ..., 0 over the eight steps of
// 1/8 s, then dies. Mass 2, inertia 4. Worked out by hand:
// - the force counts twice: speed = 2 * 28 * (1/8) / 2 = 3.5;
// - position, moved before each speed change: sum of v dt + a dt^2 / 2m over
//   16 steps = 189/32;
// - torque (0, 1, 0) x (f, 0, 0) = (0, 0, -f), divided by the inertia:
//   moment = -28 / 4 / 8 = -0.875;
// - turn of each step = old moment * dt / inertia: -91/256 rad in all.
TEST(PhysicalObjectTest, BlowAtAnOffsetPointPushesAndSpinsAsWorkedOutByHand)
{
    ForceBlow blow;
    blow.released = false;
    liveFor(blow, 1.0f);
    blow.setBaseForce(direction(1, 0, 0), 8.0f);
    PhysicalObject body;
    body.mass = 2.0f;
    body.momentOfInertia = 4.0f;
    liveFor(body, 100.0f);
    ASSERT_TRUE(body.addForce(&blow, point(0, 1, 0)));

    for (int i = 0; i < 16; ++i) {
        blow.update(0.125f);
        body.update(0.125f);
    }
    expectVector(body.speed, 3.5f, 0, 0, 0, 0);
    expectVector(body.getPosition(), 189.0f / 32.0f, 0, 0, 1, 0);
    expectVector(body.cineticMoment, 0, 0, -0.875f, 0, 0);
    const float turn = -91.0f / 256.0f;
    expectVector(body.getMatrixObject()->getColumn(0), std::cos(turn), std::sin(turn), 0, 0, 1e-6f);
    // The dead blow was dropped from its slot and is free again.
    EXPECT_FALSE(blow.isAlive);
    EXPECT_TRUE(blow.released);
    EXPECT_EQ(body.getSlotForce(0), nullptr);
}

TEST(PhysicalObjectTest, SlotsTakeTheFirstEmptyOrDeadOneRefuseASixthAndDropTheDead)
{
    ForceField forces[7];
    for (ForceField& f : forces) {
        f.released = false;  // taken, as the game does
        f.alive();
    }
    PhysicalObject body;
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(i % 2 == 0 ? body.addForce(&forces[i], point(i, 0, 0)) : body.addForce(&forces[i]));
        EXPECT_EQ(body.getSlotHasPoint(i), i % 2 == 0);
    }
    EXPECT_FALSE(body.addForce(&forces[5])) << "a sixth live force";

    forces[2].die();
    EXPECT_TRUE(body.addForce(&forces[5]));
    EXPECT_EQ(body.getSlotForce(2), &forces[5]);
    EXPECT_FALSE(body.getSlotHasPoint(2));
    EXPECT_TRUE(forces[2].released) << "a dead force pushed out is given back, as cleanForces does";

    // Removing a force held nowhere clears slot 4 all the same.
    EXPECT_TRUE(body.removeForce(&forces[6]));
    EXPECT_EQ(body.getSlotForce(4), nullptr);
    EXPECT_TRUE(body.removeForce(&forces[1]));
    EXPECT_EQ(body.getSlotForce(1), nullptr);

    forces[3].die();
    body.cleanForces();
    EXPECT_EQ(body.getSlotForce(3), nullptr);
    EXPECT_TRUE(forces[3].released);
    EXPECT_FALSE(forces[0].released);

    CaptureStdout out;
    EXPECT_FALSE(body.addForce(nullptr));
    EXPECT_FALSE(body.removeForce(nullptr));
    EXPECT_EQ(out.text().rfind("[Warning] PhysicalObject ", 0), 0u);
}

TEST(PhysicalObjectTest, ForceDestroyedWhileAttachedEmptiesItsSlots)
{
    PhysicalObject a;
    PhysicalObject b;
    ForceField kept;
    kept.alive();
    auto* doomed = new ForceField;
    doomed->alive();
    a.addForce(doomed, point(0, 1, 0));
    a.addForce(&kept);
    a.addForce(doomed);
    b.addForce(doomed);
    delete doomed;
    EXPECT_EQ(a.getSlotForce(0), nullptr);
    EXPECT_EQ(a.getSlotForce(1), &kept);
    EXPECT_EQ(a.getSlotForce(2), nullptr);
    EXPECT_EQ(b.getSlotForce(0), nullptr);
    liveFor(a, 10.0f);
    EXPECT_TRUE(a.update(0.1f));
}

TEST(PhysicalObjectTest, LifeEndsPastTheLifetimeAndHidesTheIncarnation)
{
    AgedObject shown;
    PhysicalObject body;
    body.setIncarnation(&shown);
    shown.hide();
    body.speed = direction(1, 0, 0);
    liveFor(body, 0.25f);
    EXPECT_TRUE(shown.isVisible());
    body.setAge(0.125f);
    EXPECT_EQ(shown.lastAge, 0.125f);

    body.update(0.0625f);
    EXPECT_TRUE(body.isAlive);
    EXPECT_FLOAT_EQ(body.getPosition().x, 0.0625f);
    body.update(0.125f);  // age 0.3125: dies before moving
    EXPECT_FALSE(body.isAlive);
    EXPECT_FALSE(shown.isVisible());
    body.update(0.125f);
    EXPECT_FLOAT_EQ(body.getPosition().x, 0.0625f);

    AgedObject beam;
    korvel::Fusion fusion;
    fusion.setIncarnation(&beam);
    fusion.alive();
    fusion.update(0.5f);
    fusion.update(0.25f);
    EXPECT_EQ(beam.lastAge, 0.75f) << "the age after the step";
}

TEST(PhysicalObjectTest, IncarnationFollowsTheBodyAndKeepsItsPlacementWhenDropped)
{
    PhysicalObject body;
    IObject3D first;
    first.getMatrixObjectChange()->setPosition(9, 9, 9);  // the body's placement wins
    ASSERT_TRUE(body.setIncarnation(&first));
    EXPECT_EQ(first.getMatrixObject(), body.getMatrixObject());

    body.speed = direction(2, 0, 0);
    liveFor(body, 100.0f);
    first.unchangeMatrixObject();
    body.update(0.5f);
    EXPECT_TRUE(first.isMatrixObjectChanged());
    expectVector(first.getWorldMin(), 1, 0, 0, 1);

    IObject3D second;
    ASSERT_TRUE(body.setIncarnation(&second));
    EXPECT_TRUE(first.isMatrixObjectOwned());
    body.update(0.5f);
    expectVector(first.getWorldMin(), 1, 0, 0, 1);

    // A new matrix for the body: the incarnation follows it, not the freed one.
    auto* moved = new Matrix4D(Matrix4D::getI4());
    moved->setPosition(5, 0, 0);
    body.setMatriceObjectOwned(moved);
    expectVector(second.getWorldMin(), 5, 0, 0, 1);

    body.releaseMatrixObject();
    EXPECT_TRUE(second.isMatrixObjectOwned());
    expectVector(second.getMatrixObject()->getPosition(), 5, 0, 0, 1);

    CaptureStdout out;
    EXPECT_FALSE(body.setIncarnation(&body));
    EXPECT_EQ(out.text().rfind("[Warning] PhysicalObject ", 0), 0u);
    EXPECT_EQ(body.getIncarnation(), &second);
}

// The game deletes its world, incarnations included, before its bodies; a
// body that goes first must leave its incarnation a placement of its own.
TEST(PhysicalObjectTest, BodyAndIncarnationMayEndInEitherOrder)
{
    auto* drawn = new IObject3D;
    {
        PhysicalObject body;
        body.setIncarnation(drawn);
        liveFor(body, 10.0f);
        delete drawn;
        EXPECT_EQ(body.getIncarnation(), nullptr);
        EXPECT_TRUE(body.update(0.1f));
    }

    IObject3D kept;
    {
        PhysicalObject body;
        body.setPosition(point(3, 4, 5));
        body.setIncarnation(&kept);
    }
    EXPECT_TRUE(kept.isMatrixObjectOwned());
    expectVector(kept.getMatrixObject()->getPosition(), 3, 4, 5, 1);

    // Watching the same incarnation again after a switch still notices its end.
    auto* again = new IObject3D;
    IObject3D other;
    PhysicalObject body;
    body.setIncarnation(again);
    body.setIncarnation(&other);
    body.setIncarnation(again);
    delete again;
    EXPECT_EQ(body.getIncarnation(), nullptr);
}

struct SpoiltStep {
    const char* name;
    std::function<void(PhysicalObject&, ForceField&)> spoil;
    float dt;
};

TEST(PhysicalObjectTest, AStepThatCannotBeComputedKeepsTheMotionAndWarnsOnce)
{
    const float inf = std::numeric_limits<float>::infinity();
    const SpoiltStep cases[] = {
        {"mass 0", [](PhysicalObject& b, ForceField&) { b.mass = 0.0f; }, 0.1f},
        {"inertia 0", [](PhysicalObject& b, ForceField&) { b.momentOfInertia = 0.0f; }, 0.1f},
        {"force NaN", [](PhysicalObject&, ForceField& f) { f.setBaseForce(direction(std::nanf(""), 0, 0)); }, 0.1f},
        {"force overflows", [](PhysicalObject&, ForceField& f) { f.setBaseForce(direction(3e38f, 0, 0)); }, 1e3f},
        {"speed infinite", [inf](PhysicalObject& b, ForceField&) { b.speed = direction(inf, 0, 0); }, 0.1f},
        {"step NaN", [](PhysicalObject&, ForceField&) {}, std::nanf("")},
        {"step infinite", [](PhysicalObject&, ForceField&) {}, inf},
        {"step negative", [](PhysicalObject&, ForceField&) {}, -0.1f},
    };
    for (const SpoiltStep& c : cases) {
        SCOPED_TRACE(c.name);
        ForceField fields[2];
        PhysicalObject sick;
        PhysicalObject healthy;
        PhysicalObject* bodies[2] = {&sick, &healthy};
        for (int i = 0; i < 2; ++i) {
            liveFor(fields[i], 1e9f);
            fields[i].setBaseForce(direction(1, 0, 0));
            bodies[i]->addForce(&fields[i], point(0, 1, 0));
            bodies[i]->cineticMoment = direction(0, 0, 0.5f);
            bodies[i]->speed = direction(1, 0, 0);
            liveFor(*bodies[i], 1e9f);
        }
        c.spoil(sick, fields[0]);
        const Matrix4D matrix = *sick.getMatrixObject();
        const Vector4D speed = sick.speed;

        CaptureStdout out;
        for (int step = 0; step < 3; ++step) {
            EXPECT_FALSE(sick.update(c.dt));
            EXPECT_TRUE(healthy.update(0.1f));
        }
        expectSameMatrix(*sick.getMatrixObject(), matrix);
        EXPECT_TRUE(sick.speed.x == speed.x || (std::isnan(speed.x) && std::isnan(sick.speed.x)));
        expectVector(sick.cineticMoment, 0, 0, 0.5f, 0, 0);
        EXPECT_EQ(out.text().rfind("[Warning] PhysicalObject ", 0), 0u) << out.text();
        EXPECT_EQ(lineCount(out.text()), 1) << out.text();
        EXPECT_GT(healthy.getPosition().x, 0.3f);
    }
}

}  // namespace
