#include "geometry/Circle.h"

#include "geometry/Shape.h"
#include "geometry/Triangle.h"

#include <cmath>
#include <iostream>

namespace korvel {

const char* Circle::className = "Circle";

Circle::Circle(const Vector4D& centre, float r) : center(centre), radius(r)
{
    placement.setI4();
    placement.setPosition(centre);
}

void Circle::setCenter(const Vector4D& centre)
{
    center = centre;
    placement.setPosition(centre);
}

void Circle::includeShape(Shape* shape, const Material* m) const
{
    if (shape == nullptr) {
        std::cout << "[Warning] no shape to include the circle in" << std::endl;
        return;
    }
    const double step = 2.0 * M_PI / static_cast<double>(division);
    for (int32_t j = 0; j < division; ++j) {
        const double a = j * step;
        const double b = ((j + 1) % division) * step;
        const Vector4D pa = place(radius * cleanCos(a), radius * cleanSin(a), 0.0f);
        const Vector4D pb = place(radius * cleanCos(b), radius * cleanSin(b), 0.0f);
        // The centre is used as stored: it already is where the placement puts it.
        if (reversed) {
            shape->addTriangle(new Triangle(center, pa, pb, m, nullptr, nullptr, nullptr));
        } else {
            shape->addTriangle(new Triangle(center, pb, pa, m, nullptr, nullptr, nullptr));
        }
    }
}

}  // namespace korvel
