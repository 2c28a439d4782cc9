#pragma once
// A flash that swells quickly and fades: its matrix is rescaled each step by
// s(age) = 500 (1 - 1 / (10 age + 1)^2), 0 at birth, 375 at 0.1 s, tending to
// 500, about its unchanged position.

#include "physics/PhysicalObject.h"

namespace korvel {

class Explosion : public PhysicalObject {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // s(age) as above.
    static float growth(float age);

    void dump() const override;
    // Back to scale 1 at the same position, then alive.
    void alive() override;
    // Rescales a live explosion by its growth and ages its incarnation, then
    // the body's step, alive or not. Its result is returned.
    bool update(float dt) override;
};

}  // namespace korvel
