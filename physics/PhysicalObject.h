#pragma once
// A moving body: a scene object whose own matrix is its placement (the
// translation is its position), with a linear and an angular state, five
// slots for forces it does not own, a life span and an incarnation, the
// visible object that follows it.
//
// One step (update) integrates in a fixed order that the game's tuning rests
// on, so keep it as it stands:
// - the position moves with the old speed (plus half the new acceleration)
//   before the speed takes the new acceleration;
// - a force attached with a point counts twice in the linear sum (once as a
//   force, once with its torque) and also turns the body;
// - the moment of inertia divides the angular state twice, once in the
//   torque and once in the rotation.
//
// Incarnation: setIncarnation links the incarnation's object matrix to this
// body's own matrix, so the world draws it where the body stands; each step's
// changeMatrixObject makes its world limits follow. Dropping an incarnation
// (a new one, a null one, or the body's end) gives it back an owned copy of
// the placement. An incarnation destroyed first (the world goes before the
// game's bodies) is noticed through its end notification and forgotten.
//
// A step that cannot be computed (a time step that is not finite or is
// negative, a mass of 0, a force, speed or placement that is not finite, a
// result that overflows) leaves the motion as it was (the body still ages)
// and returns false, with one warning in the body's life.
//
// The game tunes the public fields directly. Slots and incarnation go through
// the operations, which keep the links between bodies and forces.
// Main thread only.

#include "core/Matrix4D.h"
#include "core/Vector4D.h"
#include "physics/Force.h"
#include "physics/IncarnationObserver.h"
#include "scene/IObject3D.h"

namespace korvel {

class PhysicalObject : public IObject3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static constexpr int forceSlots = 5;

    PhysicalObject();
    PhysicalObject(const PhysicalObject&) = delete;
    PhysicalObject& operator=(const PhysicalObject&) = delete;
    // Leaves its forces and gives its incarnation an owned placement.
    ~PhysicalObject() override;

    // "speed" stands before the speed vector.
    void dump() const override;
    // Also ages the incarnation.
    void setAge(float a) override;
    // Marks the body's matrix changed and lets the incarnation follow.
    void changeMatrixObject() override;

    // The sum of the live forces of the slots, w 0. Returns true.
    virtual bool updateAcceleration(float dt);
    // The torque of the live forces with a point, divided by the moment of
    // inertia; those forces are added to the acceleration once more. True.
    virtual bool updateDynamicMoment(float dt);
    // Age 0, alive, incarnation shown.
    virtual void alive();
    // Dead, incarnation hidden.
    virtual void die();
    // The per-frame step. True, or false for a step refused (see above).
    virtual bool update(float dt);

    // Links the incarnation to this body's matrix. Null drops the current
    // one; the body itself or a body that it drives is refused (false).
    bool setIncarnation(IObject3D* object);
    IObject3D* getIncarnation() const { return incarnation; }
    // Sets x, y, z of the translation; false when the body has no matrix.
    bool setPosition(const Vector4D& p);
    // The translation of the matrix, or (0, 0, 0, 1) without one.
    Vector4D getPosition() const;
    // Gives the incarnation its own copy first, so nothing points at the
    // freed matrix.
    void releaseMatrixObject();

    void initForces();
    // The first slot that is empty or holds a dead force, which is then
    // released as cleanForces would; false when all five hold live forces or
    // no force is given.
    bool addForce(Force* f, const Vector4D& point);
    bool addForce(Force* f);
    // Clears the first slot holding f. A force held by no slot clears slot 4
    // all the same and still answers true: deliberate, kept.
    bool removeForce(Force* f);
    // Drops the dead forces of the slots and sets their released flag.
    void cleanForces();

    void updatePosition(float dt);
    void updateRotation(float dt);
    void updateSpeed(float dt);
    void updateCineticMoment(float dt);

    Force* getSlotForce(int slot) const;
    const Vector4D& getSlotPoint(int slot) const;
    bool getSlotHasPoint(int slot) const;

    bool isAlive;
    float age;
    float lifetime;
    Vector4D speed;
    Vector4D cineticMoment;
    Vector4D acceleration;
    Vector4D dynamicMoment;
    Vector4D rotation;
    float radius;
    float mass;
    float momentOfInertia;

protected:
    // "[Warning] ", the class name and id, then what and detail.
    void warn(const char* what, const char* detail = "") const;

private:
    friend class IncarnationObserver;

    struct Motion {
        Matrix4D matrix;
        Vector4D speed;
        Vector4D cineticMoment;
        Vector4D acceleration;
        Vector4D dynamicMoment;
        Vector4D rotation;
    };

    void dumpForces() const;
    // The slot taken, or -1.
    int attachForce(Force* f);
    void releaseDeadForce(int slot, const Force* incoming);
    void occupySlot(int slot, Force* f);
    void vacateSlot(int slot);
    bool drives(const IObject3D* object) const;
    void giveBackPlacement();
    void incarnationEnded();
    Motion saveMotion() const;
    void restoreMotion(const Motion& motion);
    bool isMotionFinite() const;
    const char* refusalReason(const Motion& before) const;
    void warnRefused(const char* reason);

    Force* forces[forceSlots];
    Vector4D forcePoints[forceSlots];
    bool hasForcePoint[forceSlots];
    Force::Attachment links[forceSlots];
    IObject3D* incarnation;
    // The matrix the incarnation was linked to, to notice a replaced one.
    Matrix4D* linkedMatrix;
    IncarnationObserver incarnationObserver;
    bool stepWarned;
};

}  // namespace korvel
