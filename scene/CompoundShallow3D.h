#pragma once
// A compound that shares a model compound's geometry: each of its joints
// holds, at the model joint's placement and under the same name, a light
// stand-in for the model's component (a Clone3D drawing that shape's
// buffers, or a nested shallow compound). Its own matrix places the whole.

#include "scene/Compound3D.h"

namespace korvel {

class CompoundShallow3D : public Compound3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    CompoundShallow3D() = default;
    CompoundShallow3D(const CompoundShallow3D& other) = default;
    ~CompoundShallow3D() override = default;

    const char* getInstanceClassName() const override { return className; }

    // Replaces the components by stand-ins for model's. A component that is
    // neither a shape nor a compound is copied through its factory.
    void cloneShallow(Compound3D& model);
};

}  // namespace korvel
