#include "physics/Fusion.h"

namespace korvel {

const char* Fusion::className = "Fusion";

Fusion::Fusion()
{
    lifetime = 1e23f;
}

bool Fusion::update(float dt)
{
    const bool result = PhysicalObject::update(dt);
    if (getIncarnation() != nullptr) {
        getIncarnation()->setAge(age);
    }
    return result;
}

}  // namespace korvel
