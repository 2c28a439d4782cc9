#include "geometry/Cylinder.h"

#include "geometry/Circle.h"
#include "geometry/Shape.h"

#include <cmath>
#include <iostream>

namespace korvel {

const char* Cylinder::className = "Cylinder";

Cylinder::Cylinder(const Vector4D& basePoint, float h, float radius)
    : base(basePoint), height(h), bottomRadius(radius), topRadius(radius), closed(true)
{
    placement.setI4();
    placement.setPosition(base);
}

Cylinder::Cylinder(const Vector4D& from, const Vector4D& to, float radius)
    : Cylinder(from, to, radius, radius, true)
{
}

Cylinder::Cylinder(const Vector4D& from, const Vector4D& to, float bottom, float top, bool isClosed)
    : base(from), height(0.0f), bottomRadius(bottom), topRadius(top), closed(isClosed)
{
    base.w = 1.0f;
    placement.setI4();
    Vector4D axis = to - from;
    axis.w = 0.0f;
    height = axis.norm3D();
    if (height > 0.0f) {
        axis.normalize3D();
        // The world axis least aligned with the direction, minus its part
        // along it, is a well-conditioned local x.
        const float ax = std::fabs(axis.x);
        const float ay = std::fabs(axis.y);
        const float az = std::fabs(axis.z);
        Vector4D helper = (ax <= ay && ax <= az) ? Vector4D(1, 0, 0, 0)
                        : (ay <= az)             ? Vector4D(0, 1, 0, 0)
                                                 : Vector4D(0, 0, 1, 0);
        Vector4D localX = helper - axis * helper.scal3D(axis);
        localX.w = 0.0f;
        localX.normalize3D();
        Vector4D localY = axis.pvect3D(localX);
        placement.setColumns(localX, localY, axis, Vector4D(0, 0, 0, 1));
    } else {
        std::cout << "[Warning] cylinder from two equal points is flat" << std::endl;
    }
    placement.setPosition(base);
}

void Cylinder::includeShape(Shape* shape, const Material* m) const
{
    if (shape == nullptr) {
        std::cout << "[Warning] no shape to include the cylinder in" << std::endl;
        return;
    }
    Circle disc(base, bottomRadius);
    disc.setDivision(division);
    disc.setReversed(false);
    disc.setPlacement(placement);
    disc.includeShape(shape, m);
    if (closed) {
        Vector4D top(0.0f, 0.0f, height, 1.0f);
        top *= placement;
        disc.setCenter(top);
        disc.setReversed(true);
        disc.setRadius(topRadius);
        disc.includeShape(shape, m);
    }
    includeBody(shape, m);
}

void Cylinder::includeBody(Shape* shape, const Material* m) const
{
    if (shape == nullptr) {
        std::cout << "[Warning] no shape to include the cylinder in" << std::endl;
        return;
    }
    if (division <= 0) {
        return;
    }
    const float step = static_cast<float>(2.0 * M_PI) / static_cast<float>(division);
    auto trig = [](float angle, bool sine) {
        const float v = sine ? std::sin(angle) : std::cos(angle);
        return std::fabs(v) < 1e-7f ? 0.0f : v;
    };
    for (int32_t j = 0; j < division; ++j) {
        const float a = static_cast<float>(j) * step;
        const float b = static_cast<float>((j + 1) % division) * step;
        const Vector4D q1 = place(bottomRadius * trig(a, false), bottomRadius * trig(a, true), 0.0f);
        const Vector4D q2 = place(bottomRadius * trig(b, false), bottomRadius * trig(b, true), 0.0f);
        const Vector4D q3 = place(topRadius * trig(a, false), topRadius * trig(a, true), height);
        const Vector4D q4 = place(topRadius * trig(b, false), topRadius * trig(b, true), height);
        if (reversed) {
            shape->addQuad(q1, q2, q4, q3, m, false, nullptr, nullptr, nullptr, nullptr);
        } else {
            shape->addQuad(q1, q3, q4, q2, m, false, nullptr, nullptr, nullptr, nullptr);
        }
    }
}

}  // namespace korvel
