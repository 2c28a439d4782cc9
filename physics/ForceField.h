#pragma once
// A constant force: the same vector wherever and however fast the body goes.

#include "physics/Force.h"

namespace korvel {

class ForceField : public Force {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    void setBaseForce(const Vector4D& force);
    // out = baseForce; position and speed are ignored.
    bool getForce(Vector4D& out, const Vector4D& position, const Vector4D& speed) override;

    Vector4D baseForce;
};

}  // namespace korvel
