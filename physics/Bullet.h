#pragma once
// A laser shot: fired along a direction, with an orientation built from it.

#include "physics/PhysicalObject.h"

namespace korvel {

class Bullet : public PhysicalObject {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    void dump() const override;
    bool update(float dt) override;

    // Revives the shot at position with the given speed (kept as given, not
    // normalised). Orientation: column 0 is up x direction; column 1 ends as
    // the unit direction itself (the d x column-0 vector computed first is
    // overwritten on purpose); column 2 stays the identity's. A speed
    // parallel to up gives a null column 0. Returns true, false when the
    // body has no matrix.
    bool fire(const Vector4D& position, const Vector4D& velocity, const Vector4D& up);
};

}  // namespace korvel
