#include "physics/Enemy.h"

#include "core/Random.h"

#include <iostream>

namespace korvel {

const char* Enemy::className = "Enemy";

Enemy::Enemy()
{
    mass = 1.0f;
    momentOfInertia = 1.0f;
    // Three separate draws: the order in which they come out is part of the
    // game's reproducible start.
    const float d1 = Random::aleaFloatMinusOneOne();
    const float d2 = Random::aleaFloatMinusOneOne();
    const float d3 = Random::aleaFloatMinusOneOne();
    cineticMoment = Vector4D(d3, d2, d1, 0.0f);
}

void Enemy::dump() const
{
    PhysicalObject::dump();
    std::cout << "blow " << (blowForce.isAlive ? "alive" : "dead") << " age " << blowForce.age << " intensity "
              << blowForce.intensity << " direction" << blowForce.direction << std::endl;
}

bool Enemy::update(float dt)
{
    const float wear = age;
    const bool result = PhysicalObject::update(dt);
    age = wear;
    return result;
}

bool Enemy::blow(const Vector4D& point, float intensity, const Vector4D& direction)
{
    blowForce.setBaseForce(direction, intensity);
    blowForce.alive();
    blowForce.lifetime = 0.1f;
    addForce(&blowForce, point);
    age = static_cast<float>(age + 0.3);
    return true;
}

bool Enemy::blow(const Vector4D& point, float intensity)
{
    return blow(point, intensity, getPosition() - point);
}

void Enemy::cleanup()
{
    mass = 1.0f;
    momentOfInertia = 1.0f;
    acceleration.setNull();
    speed.setNull();
    dynamicMoment.setNull();
    cineticMoment.setNull();
}

}  // namespace korvel
