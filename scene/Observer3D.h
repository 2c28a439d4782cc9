#pragma once
// Makes a scene object follow the subjects it is attached to: when one of
// them reports that its placement changed, the object recomputes its world
// limits and marks its matrix changed (so the boundary box is rebuilt).
// Created and owned by the object itself (IObject3D::getObserver).

#include "core/Observer.h"

#include <cstdint>

namespace korvel {

class IObject3D;

class Observer3D : public Observer {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Subjects that carry a placement send 2 or 4 once it changed.
    static bool isMatrixEvent(int32_t event) { return event == 2 || event == 4; }

    // object is not owned; it owns this observer and outlives it.
    explicit Observer3D(IObject3D* object = nullptr) : observed(object) {}

    void onNotify(Object* source, int32_t event) override;

    IObject3D* getObserved() const { return observed; }

private:
    IObject3D* observed;
};

}  // namespace korvel
