#include "geometry/GeometryTemplate.h"

#include "geometry/Shape.h"

#include <cmath>

namespace korvel {

const char* GeometryTemplate::className = "GeometryTemplate";

Shape* GeometryTemplate::createShape() const
{
    auto* shape = new Shape();
    includeShape(shape, nullptr);
    return shape;
}

void GeometryTemplate::includeShape(Shape*, const Material*) const
{
}

Vector4D GeometryTemplate::place(float x, float y, float z) const
{
    Vector4D p(x, y, z, 1.0f);
    p *= placement;
    return p;
}

namespace {

float dropNoise(double v)
{
    // Below float's resolution of a unit value: the exact result was 0.
    return std::fabs(v) < 1e-7 ? 0.0f : static_cast<float>(v);
}

}  // namespace

float GeometryTemplate::cleanSin(double a)
{
    return dropNoise(std::sin(a));
}

float GeometryTemplate::cleanCos(double a)
{
    return dropNoise(std::cos(a));
}

}  // namespace korvel
