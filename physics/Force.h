#pragma once
// A force that bodies ask, once a step, for a vector at their position and
// speed. Forces are small reusable objects: they age, die after their
// lifetime and are revived by alive(). Bodies only point at them; they never
// own them.
//
// released: true while the force is free for the game to take. It is true
// from construction; the game clears it when it takes the force, and a body
// sets it again when it drops the dead force from its slots.
//
// Every body slot that points at a force is linked into the force's list of
// attachments (the links live in the body, so attaching never allocates). A
// force destroyed while attached empties those slots instead of leaving them
// pointing at freed memory.
// Main thread only.

#include "core/Object.h"
#include "core/Vector4D.h"

namespace korvel {

class PhysicalObject;

class Force : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // One body slot pointing at a force. It points back at the slot's fields
    // so that a dying force can empty them without knowing the body.
    struct Attachment {
        Force** slot = nullptr;
        bool* hasPoint = nullptr;
        Attachment* previous = nullptr;
        Attachment* next = nullptr;
    };

    Force();
    // A copy takes the state, never the attachments: no slot points at it.
    Force(const Force& other);
    Force& operator=(const Force& other);
    // Empties every slot that still points at this force.
    ~Force() override;

    // Ages a live force by dt and kills it once its age passes its lifetime.
    // A time step that is not finite or is negative is refused: age kept,
    // one warning in the force's life, false.
    virtual bool update(float dt);
    // The null vector; derived forces say what they push with.
    virtual bool getForce(Vector4D& out, const Vector4D& position, const Vector4D& speed);
    virtual void alive();
    virtual void die();
    void setAge(float a);

    bool released;
    float age;
    bool isAlive;
    float lifetime;

private:
    friend class PhysicalObject;

    void attach(Attachment& link);
    void detach(Attachment& link);

    Attachment* attachments;
    bool stepWarned;
};

}  // namespace korvel
