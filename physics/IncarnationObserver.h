#pragma once
// Watches a body's incarnation for its end, so that a body whose incarnation
// is destroyed first forgets it instead of reaching freed memory later.
// Owned by the body, one per body.

#include "core/Observer.h"

#include <cstdint>

namespace korvel {

class IObject3D;
class PhysicalObject;
class Subject;

class IncarnationObserver : public Observer {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // body is not owned; it owns this observer.
    explicit IncarnationObserver(PhysicalObject* body);

    void onNotify(Object* source, int32_t event) override;
    // Stops watching the current object, then watches object (may be null).
    void watch(IObject3D* object);

private:
    PhysicalObject* body;
    Subject* watched;
};

}  // namespace korvel
