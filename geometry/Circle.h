#pragma once
// A disc in the local xy plane, a fan of division triangles around its
// centre, facing -z when not reversed and +z when reversed.

#include "geometry/GeometryTemplate.h"

namespace korvel {

class Circle : public GeometryTemplate {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // The placement is the identity moved to the centre.
    Circle(const Vector4D& centre, float radius);

    void includeShape(Shape* shape, const Material* m) const override;

    // Moves the centre and the placement's position with it, the placement's
    // orientation kept.
    void setCenter(const Vector4D& centre);
    const Vector4D& getCenter() const { return center; }
    float getRadius() const { return radius; }
    void setRadius(float value) { radius = value; }

private:
    Vector4D center;
    float radius;
};

}  // namespace korvel
