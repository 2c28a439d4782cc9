#include "physics/ForceField.h"

namespace korvel {

const char* ForceField::className = "ForceField";

void ForceField::setBaseForce(const Vector4D& force)
{
    baseForce = force;
}

bool ForceField::getForce(Vector4D& out, const Vector4D&, const Vector4D&)
{
    out = baseForce;
    return true;
}

}  // namespace korvel
