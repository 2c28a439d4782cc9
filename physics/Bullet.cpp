#include "physics/Bullet.h"

namespace korvel {

const char* Bullet::className = "Bullet";

void Bullet::dump() const
{
    PhysicalObject::dump();
}

bool Bullet::update(float dt)
{
    return PhysicalObject::update(dt);
}

bool Bullet::fire(const Vector4D& position, const Vector4D& velocity, const Vector4D& up)
{
    if (matrixObject == nullptr) {
        warn("cannot be fired without a matrix");
        return false;
    }
    Matrix4D& m = *matrixObject;
    m.setI4();
    Vector4D d = velocity;
    d.normalize3D();
    const Vector4D x = up.pvect3D(d);
    m.setColumn(0, x);
    const Vector4D y = d.pvect3D(x);
    m.setColumn(1, y);
    m.setColumn(1, d);
    alive();
    speed = velocity;
    setPosition(position);
    if (getIncarnation() != nullptr) {
        getIncarnation()->show();
    }
    return true;
}

}  // namespace korvel
