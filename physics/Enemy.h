#pragma once
// A spinning rock. Its age is not a clock but the wear that hits have done:
// each blow adds 0.3 and a step never changes it, so an enemy dies only when
// its wear passes its lifetime (during a step), never of time alone.

#include "physics/ForceBlow.h"
#include "physics/PhysicalObject.h"

namespace korvel {

class Enemy : public PhysicalObject {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Mass and moment of inertia 1, a random spin in [-1, 1] on each axis.
    Enemy();

    void dump() const override;
    // The step, with the age (the wear) kept.
    bool update(float dt) override;

    // Re-arms the enemy's own blow for 0.1 s and attaches it at the point.
    // While the previous blow lives, that same force takes a further slot and
    // so counts in both until it dies. Adds 0.3 to the wear. Returns true.
    bool blow(const Vector4D& point, float intensity, const Vector4D& direction);
    // The push points from the point of impact towards the body's position.
    bool blow(const Vector4D& point, float intensity);
    // Mass and inertia 1; speed, spin, acceleration and torque null.
    void cleanup();

    // Nothing ages the enemy's own blow but its owner: whoever uses blow()
    // updates it like the pool's forces.
    ForceBlow& getBlowForce() { return blowForce; }
    const ForceBlow& getBlowForce() const { return blowForce; }

private:
    ForceBlow blowForce;
};

}  // namespace korvel
