#include "physics/Explosion.h"

#include <iostream>

namespace korvel {

const char* Explosion::className = "Explosion";

float Explosion::growth(float age)
{
    const float g = 10.0f * age + 1.0f;
    return 500.0f * (1.0f - 1.0f / (g * g));
}

void Explosion::dump() const
{
    PhysicalObject::dump();
    std::cout << "scale " << growth(age) << std::endl;
}

void Explosion::alive()
{
    if (matrixObject != nullptr) {
        const Vector4D p = getPosition();
        matrixObject->setI4();
        setPosition(p);
    }
    PhysicalObject::alive();
}

bool Explosion::update(float dt)
{
    if (isAlive) {
        if (matrixObject != nullptr) {
            const Vector4D p = getPosition();
            matrixObject->setI4();
            matrixObject->enlarge(growth(age));
            setPosition(p);
        }
        if (getIncarnation() != nullptr) {
            getIncarnation()->setAge(age);
        }
    }
    return PhysicalObject::update(dt);
}

}  // namespace korvel
