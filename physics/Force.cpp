#include "physics/Force.h"

#include <cmath>
#include <iostream>

namespace korvel {

const char* Force::className = "Force";

Force::Force() : released(true), age(0.0f), isAlive(false), lifetime(1.0f), attachments(nullptr), stepWarned(false)
{
}

Force::Force(const Force& other)
    : Object(other),
      released(other.released),
      age(other.age),
      isAlive(other.isAlive),
      lifetime(other.lifetime),
      attachments(nullptr),
      stepWarned(false)
{
}

Force& Force::operator=(const Force& other)
{
    Object::operator=(other);
    released = other.released;
    age = other.age;
    isAlive = other.isAlive;
    lifetime = other.lifetime;
    return *this;
}

Force::~Force()
{
    while (attachments != nullptr) {
        Attachment* link = attachments;
        attachments = link->next;
        *link->slot = nullptr;
        *link->hasPoint = false;
        link->previous = nullptr;
        link->next = nullptr;
    }
}

bool Force::update(float dt)
{
    if (!std::isfinite(dt) || dt < 0.0f) {
        if (!stepWarned) {
            stepWarned = true;
            std::cout << "[Warning] " << getInstanceClassName() << ' ' << id
                      << " update refused, age kept: the time step is "
                      << (std::isfinite(dt) ? "negative" : "not finite") << std::endl;
        }
        return false;
    }
    if (isAlive) {
        age += dt;
        if (age > lifetime) {
            die();
        }
    }
    return true;
}

bool Force::getForce(Vector4D& out, const Vector4D&, const Vector4D&)
{
    out.setNull();
    return true;
}

void Force::alive()
{
    age = 0.0f;
    isAlive = true;
    stepWarned = false;
}

void Force::die()
{
    isAlive = false;
}

void Force::setAge(float a)
{
    age = a;
}

void Force::attach(Attachment& link)
{
    link.previous = nullptr;
    link.next = attachments;
    if (attachments != nullptr) {
        attachments->previous = &link;
    }
    attachments = &link;
}

void Force::detach(Attachment& link)
{
    if (link.previous != nullptr) {
        link.previous->next = link.next;
    } else if (attachments == &link) {
        attachments = link.next;
    }
    if (link.next != nullptr) {
        link.next->previous = link.previous;
    }
    link.previous = nullptr;
    link.next = nullptr;
}

}  // namespace korvel
