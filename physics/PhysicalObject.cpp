#include "physics/PhysicalObject.h"

#include <cmath>
#include <iostream>

namespace korvel {

const char* PhysicalObject::className = "PhysicalObject";

PhysicalObject::PhysicalObject()
    : isAlive(false),
      age(0.0f),
      lifetime(1.0f),
      radius(0.1f),
      mass(1.0f),
      momentOfInertia(1.0f),
      forces{},
      hasForcePoint{},
      incarnation(nullptr),
      linkedMatrix(nullptr),
      incarnationObserver(this),
      stepWarned(false)
{
    for (int i = 0; i < forceSlots; ++i) {
        links[i].slot = &forces[i];
        links[i].hasPoint = &hasForcePoint[i];
    }
}

PhysicalObject::~PhysicalObject()
{
    initForces();
    setIncarnation(nullptr);
}

void PhysicalObject::dump() const
{
    std::cout << getInstanceClassName() << " id " << ISerializable::getId() << (isAlive ? " alive" : " dead")
              << " age " << age << " lifetime " << lifetime << std::endl;
    std::cout << "speed" << speed << std::endl;
    std::cout << "acceleration" << acceleration << std::endl;
    std::cout << "cineticMoment" << cineticMoment << std::endl;
    std::cout << "dynamicMoment" << dynamicMoment << std::endl;
    std::cout << "rotation" << rotation << std::endl;
    std::cout << "radius " << radius << " mass " << mass << " momentOfInertia " << momentOfInertia << std::endl;
    dumpForces();
    IObject3D::dump();
}

void PhysicalObject::dumpForces() const
{
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] == nullptr) {
            continue;
        }
        std::cout << "force " << i << ' ' << forces[i]->getInstanceClassName() << ' ' << forces[i]->getId()
                  << (forces[i]->isAlive ? " alive" : " dead");
        if (hasForcePoint[i]) {
            std::cout << " at" << forcePoints[i];
        }
        std::cout << std::endl;
    }
}

void PhysicalObject::setAge(float a)
{
    age = a;
    if (incarnation != nullptr) {
        incarnation->setAge(a);
    }
}

void PhysicalObject::changeMatrixObject()
{
    matrixChanged = true;
    if (incarnation == nullptr) {
        return;
    }
    // The body's matrix was replaced: the incarnation points at the old one.
    if (matrixObject != linkedMatrix && matrixObject != nullptr) {
        linkedMatrix = matrixObject;
        incarnation->setMatriceObjectLinked(matrixObject);
        return;
    }
    incarnation->changeMatrixObject();
}

bool PhysicalObject::updateAcceleration(float)
{
    acceleration.setNull();
    const Vector4D position = getPosition();
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] != nullptr && forces[i]->isAlive) {
            Vector4D f;
            forces[i]->getForce(f, position, Vector4D(speed));
            acceleration += f;
        }
    }
    acceleration.w = 0.0f;
    return true;
}

bool PhysicalObject::updateDynamicMoment(float)
{
    dynamicMoment.setNull();
    const float k = static_cast<float>(1.0 / momentOfInertia);
    const Vector4D position = getPosition();
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] != nullptr && forces[i]->isAlive && hasForcePoint[i]) {
            Vector4D f;
            forces[i]->getForce(f, position, Vector4D(speed));
            // Counted a second time in the linear sum: the tuning relies on it.
            acceleration += f;
            const Vector4D r = forcePoints[i] - position;
            dynamicMoment += r.pvect3D(f) * k;
        }
    }
    dynamicMoment.w = 0.0f;
    return true;
}

void PhysicalObject::alive()
{
    age = 0.0f;
    isAlive = true;
    stepWarned = false;
    if (incarnation != nullptr) {
        incarnation->show();
    }
}

void PhysicalObject::die()
{
    isAlive = false;
    if (incarnation != nullptr) {
        incarnation->hide();
    }
}

bool PhysicalObject::update(float dt)
{
    cleanForces();
    if (!isAlive) {
        return true;
    }
    if (!std::isfinite(dt) || dt < 0.0f) {
        warnRefused(std::isfinite(dt) ? "the time step is negative" : "the time step is not finite");
        return false;
    }
    age += dt;
    if (age > lifetime) {
        die();
    }
    if (!isAlive) {
        return true;
    }
    const Motion before = saveMotion();
    updateAcceleration(dt);
    updateDynamicMoment(dt);
    updatePosition(dt);
    updateRotation(dt);
    updateSpeed(dt);
    updateCineticMoment(dt);
    if (!isMotionFinite()) {
        warnRefused(refusalReason(before));
        restoreMotion(before);
        return false;
    }
    changeMatrixObject();
    return true;
}

void PhysicalObject::updatePosition(float dt)
{
    if (matrixObject == nullptr) {
        return;
    }
    const float k = static_cast<float>(0.5 * dt * dt / mass);
    Vector4D p = matrixObject->getPosition();
    p += speed * dt + acceleration * k;
    p.w = 1.0f;
    matrixObject->setPosition(p);
}

void PhysicalObject::updateRotation(float dt)
{
    if (cineticMoment.isNull()) {
        return;
    }
    rotation = cineticMoment * (dt / momentOfInertia);
    if (!rotation.isNull() && matrixObject != nullptr) {
        matrixObject->rotRLocal(rotation);
    }
}

void PhysicalObject::updateSpeed(float dt)
{
    speed += acceleration * (dt / mass);
    speed.w = 0.0f;
}

void PhysicalObject::updateCineticMoment(float dt)
{
    cineticMoment += dynamicMoment * dt;
}

bool PhysicalObject::setIncarnation(IObject3D* object)
{
    if (object != nullptr && drives(object)) {
        warn("cannot be incarnated by itself or by a body it drives");
        return false;
    }
    if (object != incarnation) {
        giveBackPlacement();
        incarnation = object;
        incarnationObserver.watch(object);
    }
    linkedMatrix = nullptr;
    if (incarnation != nullptr && matrixObject != nullptr) {
        linkedMatrix = matrixObject;
        incarnation->setMatriceObjectLinked(matrixObject);
    }
    return true;
}

// Following incarnations that are bodies themselves must not lead back here,
// or each step would follow itself for ever.
bool PhysicalObject::drives(const IObject3D* object) const
{
    for (const IObject3D* next = object; next != nullptr;) {
        if (next == this) {
            return true;
        }
        const auto* body = dynamic_cast<const PhysicalObject*>(next);
        next = body != nullptr ? body->incarnation : nullptr;
    }
    return false;
}

void PhysicalObject::giveBackPlacement()
{
    if (incarnation != nullptr && matrixObject != nullptr && incarnation->getMatrixObject() == matrixObject &&
        !incarnation->isMatrixObjectOwned()) {
        incarnation->setMatriceObjectOwned(new Matrix4D(*matrixObject));
    }
    linkedMatrix = nullptr;
}

void PhysicalObject::incarnationEnded()
{
    incarnation = nullptr;
    linkedMatrix = nullptr;
}

bool PhysicalObject::setPosition(const Vector4D& p)
{
    if (matrixObject == nullptr) {
        warn("has no matrix to place");
        return false;
    }
    matrixObject->setPosition(p.x, p.y, p.z);
    return true;
}

Vector4D PhysicalObject::getPosition() const
{
    return matrixObject != nullptr ? matrixObject->getPosition() : Vector4D(0.0f, 0.0f, 0.0f, 1.0f);
}

void PhysicalObject::releaseMatrixObject()
{
    giveBackPlacement();
    IObject3D::releaseMatrixObject();
}

void PhysicalObject::initForces()
{
    for (int i = 0; i < forceSlots; ++i) {
        vacateSlot(i);
    }
}

bool PhysicalObject::addForce(Force* f, const Vector4D& point)
{
    const int slot = attachForce(f);
    if (slot < 0) {
        return false;
    }
    forcePoints[slot] = point;
    hasForcePoint[slot] = true;
    return true;
}

bool PhysicalObject::addForce(Force* f)
{
    return attachForce(f) >= 0;
}

int PhysicalObject::attachForce(Force* f)
{
    if (f == nullptr) {
        warn("addForce given no force");
        return -1;
    }
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] == nullptr || !forces[i]->isAlive) {
            releaseDeadForce(i, f);
            occupySlot(i, f);
            return i;
        }
    }
    return -1;
}

// A dead force pushed out of its slot is dropped as cleanForces drops it:
// given back (released) and out of every slot of this body. Otherwise a pool
// entry overwritten before the body's next step would be lost for good.
void PhysicalObject::releaseDeadForce(int slot, const Force* incoming)
{
    Force* dead = forces[slot];
    if (dead == nullptr || dead == incoming) {
        return;
    }
    dead->released = true;
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] == dead) {
            vacateSlot(i);
        }
    }
}

bool PhysicalObject::removeForce(Force* f)
{
    if (f == nullptr) {
        warn("removeForce given no force");
        return false;
    }
    int slot = forceSlots - 1;
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] == f) {
            slot = i;
            break;
        }
    }
    vacateSlot(slot);
    return true;
}

void PhysicalObject::cleanForces()
{
    for (int i = 0; i < forceSlots; ++i) {
        if (forces[i] != nullptr && !forces[i]->isAlive) {
            forces[i]->released = true;
            vacateSlot(i);
        }
    }
}

void PhysicalObject::occupySlot(int slot, Force* f)
{
    vacateSlot(slot);
    forces[slot] = f;
    hasForcePoint[slot] = false;
    f->attach(links[slot]);
}

void PhysicalObject::vacateSlot(int slot)
{
    if (forces[slot] != nullptr) {
        forces[slot]->detach(links[slot]);
    }
    forces[slot] = nullptr;
    hasForcePoint[slot] = false;
}

Force* PhysicalObject::getSlotForce(int slot) const
{
    return slot >= 0 && slot < forceSlots ? forces[slot] : nullptr;
}

const Vector4D& PhysicalObject::getSlotPoint(int slot) const
{
    static const Vector4D none;
    return slot >= 0 && slot < forceSlots ? forcePoints[slot] : none;
}

bool PhysicalObject::getSlotHasPoint(int slot) const
{
    return slot >= 0 && slot < forceSlots && hasForcePoint[slot];
}

PhysicalObject::Motion PhysicalObject::saveMotion() const
{
    return Motion{matrixObject != nullptr ? *matrixObject : Matrix4D(), speed, cineticMoment,
                  acceleration, dynamicMoment, rotation};
}

void PhysicalObject::restoreMotion(const Motion& motion)
{
    if (matrixObject != nullptr) {
        *matrixObject = motion.matrix;
    }
    speed = motion.speed;
    cineticMoment = motion.cineticMoment;
    acceleration = motion.acceleration;
    dynamicMoment = motion.dynamicMoment;
    rotation = motion.rotation;
}

bool PhysicalObject::isMotionFinite() const
{
    return (matrixObject == nullptr || matrixObject->isFinite()) && speed.isFinite() && cineticMoment.isFinite() &&
           acceleration.isFinite() && dynamicMoment.isFinite() && rotation.isFinite();
}

const char* PhysicalObject::refusalReason(const Motion& before) const
{
    if (mass == 0.0f || !std::isfinite(mass)) {
        return "the mass is 0 or not finite";
    }
    if (momentOfInertia == 0.0f || !std::isfinite(momentOfInertia)) {
        return "the moment of inertia is 0 or not finite";
    }
    if (!before.speed.isFinite() || !before.cineticMoment.isFinite() ||
        (matrixObject != nullptr && !before.matrix.isFinite())) {
        return "its speed, spin or placement is not finite";
    }
    if (!acceleration.isFinite() || !dynamicMoment.isFinite()) {
        return "a force is not finite";
    }
    return "the step overflows";
}

void PhysicalObject::warnRefused(const char* reason)
{
    if (stepWarned) {
        return;
    }
    stepWarned = true;
    warn("step refused, motion kept: ", reason);
}

void PhysicalObject::warn(const char* what, const char* detail) const
{
    std::cout << "[Warning] " << getInstanceClassName() << ' ' << ISerializable::getId() << ' ' << what << detail
              << std::endl;
}

}  // namespace korvel
