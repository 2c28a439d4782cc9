#pragma once
// The clone of a model whose level is one shape: it draws that shape's GPU
// buffers (its "mother's", shared, never copied nor deleted here) under its
// own matrix, with the mother's program and texture unless it has its own.
// Picking tests the mother's triangles placed by the clone's matrix.

#include "scene/IClone3D.h"

#include <string>

namespace korvel {

class Shape3D;

class Clone3D : public IClone3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    Clone3D();
    // Shares the same mother.
    Clone3D(const Clone3D& other);
    ~Clone3D() override = default;

    const char* getInstanceClassName() const override { return className; }
    void dump() const override;

    // Takes the model's object of the clone's level as mother when it is a
    // shape; otherwise the clone has no mother and draws nothing.
    void setModel(IModel3D* value) override;
    bool make() override;
    bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit) override;
    // The mother's limits.
    void updateLimits() override;
    bool getMinPointY(Vector4D& p) const override;

    // Null unshares the mother's buffers.
    void setMother(Shape3D* value);
    Shape3D* getMother() const { return mother; }

private:
    Shape3D* mother;
    std::string motherName;
};

}  // namespace korvel
