#include "geometry/TriangleTextured.h"

#include "geometry/Shape.h"

#include <iostream>

namespace korvel {

const char* TriangleTextured::className = "TriangleTextured";

TriangleTextured::TriangleTextured(const Vector4D& a, const Vector4D& b, const Vector4D& c,
                                   const Material* m, const Vector4D* na, const Vector4D* nb,
                                   const Vector4D* nc, const Vector4D* ta, const Vector4D* tb,
                                   const Vector4D* tc)
    : Triangle(a, b, c, m, na, nb, nc)
{
    const Vector4D* t[3] = {ta, tb, tc};
    initializeMapCoords();
    copyMapCoords(t);
}

TriangleTextured::TriangleTextured(const TriangleTextured& other) : Triangle(other)
{
    initializeMapCoords();
    copyMapCoords(other.mapCoords);
}

TriangleTextured& TriangleTextured::operator=(const TriangleTextured& other)
{
    if (this != &other) {
        Triangle::operator=(other);
        copyMapCoords(other.mapCoords);
    }
    return *this;
}

TriangleTextured::~TriangleTextured()
{
    releaseMapCoords();
}

void TriangleTextured::dump() const
{
    Triangle::dump();
    std::cout << "UV" << std::endl;
    for (const Vector4D* t : mapCoords) {
        // A missing coordinate is skipped rather than dereferenced.
        if (t != nullptr) {
            std::cout << *t << std::endl;
        }
    }
}

void TriangleTextured::initializeMapCoords()
{
    mapCoords[0] = mapCoords[1] = mapCoords[2] = nullptr;
}

void TriangleTextured::copyMapCoords(const Vector4D* const* src)
{
    for (int i = 0; i < 3; ++i) {
        if (src[i] == nullptr) {
            releaseMapCoord(i);
        } else if (mapCoords[i] != nullptr) {
            *mapCoords[i] = *src[i];
        } else {
            mapCoords[i] = new Vector4D(*src[i]);
        }
    }
}

void TriangleTextured::releaseMapCoords()
{
    for (int i = 0; i < 3; ++i) {
        releaseMapCoord(i);
    }
}

void TriangleTextured::releaseMapCoord(int i)
{
    if (i < 0 || i > 2) {
        return;
    }
    delete mapCoords[i];
    mapCoords[i] = nullptr;
}

void TriangleTextured::addShapeQuad(Shape* shape, const Vector4D& a, const Vector4D& b,
                                    const Vector4D& c, const Vector4D& d, const Material* m, bool,
                                    const Vector4D* na, const Vector4D* nb, const Vector4D* nc,
                                    const Vector4D* nd, const Vector4D* ta, const Vector4D* tb,
                                    const Vector4D* tc, const Vector4D* td)
{
    if (shape == nullptr) {
        std::cout << "[Warning] no shape to add a textured quad to" << std::endl;
        return;
    }
    shape->addTriangle(new TriangleTextured(a, b, c, m, na, nb, nc, ta, tb, tc));
    shape->addTriangle(new TriangleTextured(a, c, d, m, na, nc, nd, ta, tc, td));
}

}  // namespace korvel
