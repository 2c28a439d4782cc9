#pragma once
// An impulse along a direction that fades linearly from its full intensity to
// zero over its own life: it falls off with its age, not with distance.

#include "physics/Force.h"

namespace korvel {

class ForceBlow : public Force {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    ForceBlow();

    // The direction is normalised in three dimensions (a null one stays null).
    void setBaseForce(const Vector4D& dir, float strength);
    // direction * ((1 - age / lifetime) * intensity); position and speed are
    // ignored. A blow older than its lifetime that was not updated yet pushes
    // backwards. A lifetime of 0 gives false and leaves out untouched.
    bool getForce(Vector4D& out, const Vector4D& position, const Vector4D& speed) override;

    Vector4D direction;
    float intensity;
};

}  // namespace korvel
