#pragma once
// A body that practically never dies and hands its age to its incarnation
// after each step (the beam's shader animates with it).

#include "physics/PhysicalObject.h"

namespace korvel {

class Fusion : public PhysicalObject {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Fusion();

    bool update(float dt) override;
};

}  // namespace korvel
