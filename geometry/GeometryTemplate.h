#pragma once
// Base of the generated primitives (disc, sphere, cylinder): dimensions, a
// division count (segments around a full turn), a winding switch and a
// placement matrix applied to every generated point. A template appends its
// triangles to a shape that the caller owns.

#include "core/Matrix4D.h"
#include "core/Object.h"

#include <cstdint>

namespace korvel {

class Material;
class Shape;

class GeometryTemplate : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // The placement is left as a default matrix (all zeros); each primitive
    // sets its own.
    GeometryTemplate() = default;

    // A new shape holding the primitive, without material; the caller owns it.
    virtual Shape* createShape() const;
    // Appends the primitive's triangles, each carrying m (may be null). The
    // bare template has none.
    virtual void includeShape(Shape* shape, const Material* m) const;

    int32_t getDivision() const { return division; }
    void setDivision(int value) { division = value; }
    bool isReversed() const { return reversed; }
    void setReversed(bool value) { reversed = value; }
    const Matrix4D& getPlacement() const { return placement; }
    void setPlacement(const Matrix4D& m) { placement = m; }

protected:
    // Local point through the placement.
    Vector4D place(float x, float y, float z) const;
    // sin and cos in double, stored as float; the rounding noise of an exact
    // zero (sin pi, cos pi/2) is dropped so that pole corners coincide.
    static float cleanSin(double a);
    static float cleanCos(double a);

    int32_t division = 5;
    // false: the face order of the plain primitive; true: the other winding.
    bool reversed = true;
    Matrix4D placement;
};

}  // namespace korvel
