#include "geometry/Sphere.h"

#include "geometry/Shape.h"

#include <cmath>
#include <iostream>

namespace korvel {

const char* Sphere::className = "Sphere";

Sphere::Sphere(const Vector4D& centre, float r) : radius(r)
{
    placement.setI4();
    placement.setPosition(centre);
}

void Sphere::includeShape(Shape* shape, const Material* m) const
{
    if (shape == nullptr) {
        std::cout << "[Warning] no shape to include the sphere in" << std::endl;
        return;
    }
    if (division <= 1) {
        return;
    }
    const double step = 2.0 * M_PI / static_cast<double>(division);
    const float r = radius;
    for (int32_t i = 1; i <= division / 2; ++i) {
        const double t0 = (i - 1) * step;
        const double t1 = i * step;
        const float s0 = cleanSin(t0);
        const float c0 = cleanCos(t0);
        const float s1 = cleanSin(t1);
        const float c1 = cleanCos(t1);
        for (int32_t j = 0; j < division; ++j) {
            const double f0 = j * step;
            const double f1 = ((j + 1) % division) * step;
            const float cf0 = cleanCos(f0);
            const float sf0 = cleanSin(f0);
            const float cf1 = cleanCos(f1);
            const float sf1 = cleanSin(f1);
            const Vector4D p1 = place(r * s0 * cf0, r * s0 * sf0, r * c0);
            const Vector4D p2 = place(r * s1 * cf0, r * s1 * sf0, r * c1);
            const Vector4D p3 = place(r * s0 * cf1, r * s0 * sf1, r * c0);
            const Vector4D p4 = place(r * s1 * cf1, r * s1 * sf1, r * c1);
            if (reversed) {
                shape->addQuad(p1, p2, p4, p3, m, false, nullptr, nullptr, nullptr, nullptr);
            } else {
                shape->addQuad(p1, p3, p4, p2, m, false, nullptr, nullptr, nullptr, nullptr);
            }
        }
    }
}

}  // namespace korvel
