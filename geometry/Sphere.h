#pragma once
// A UV sphere: division / 2 bands from the +z pole, division quads each.
// The polar step equals the azimuth step, so an odd division leaves the last
// band at the -z pole open; that is kept as it is.

#include "geometry/GeometryTemplate.h"

namespace korvel {

class Sphere : public GeometryTemplate {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // The placement is the identity moved to the centre.
    Sphere(const Vector4D& centre, float radius);

    // Nothing for a division of 1 or less. Outward faces when reversed.
    void includeShape(Shape* shape, const Material* m) const override;

    float getRadius() const { return radius; }
    void setRadius(float value) { radius = value; }

private:
    float radius;
};

}  // namespace korvel
