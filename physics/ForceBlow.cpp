#include "physics/ForceBlow.h"

namespace korvel {

const char* ForceBlow::className = "ForceBlow";

ForceBlow::ForceBlow() : intensity(0.0f)
{
}

void ForceBlow::setBaseForce(const Vector4D& dir, float strength)
{
    direction = dir;
    direction.normalize3D();
    intensity = strength;
}

bool ForceBlow::getForce(Vector4D& out, const Vector4D&, const Vector4D&)
{
    if (lifetime == 0.0f) {
        return false;
    }
    out = direction * ((1.0f - age / lifetime) * intensity);
    return true;
}

}  // namespace korvel
