#pragma once
// A triangle with texture coordinates (u, v in x, y) per vertex. The
// coordinates are always owned, whether the points are or not. save/load are
// the plain triangle's and do not carry them.

#include "geometry/Triangle.h"

namespace korvel {

class Shape;

class TriangleTextured : public Triangle {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    TriangleTextured(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Material* m,
                     const Vector4D* na, const Vector4D* nb, const Vector4D* nc,
                     const Vector4D* ta, const Vector4D* tb, const Vector4D* tc);
    TriangleTextured(const TriangleTextured& other);
    TriangleTextured& operator=(const TriangleTextured& other);
    ~TriangleTextured() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }

    void initializeMapCoords();
    void copyMapCoords(const Vector4D* const* src);
    void releaseMapCoords();
    void releaseMapCoord(int i);

    // Two textured triangles (a, b, c) and (a, c, d) through the shape's
    // addTriangle; no degenerate test. The boolean is unused.
    static void addShapeQuad(Shape* shape, const Vector4D& a, const Vector4D& b, const Vector4D& c,
                             const Vector4D& d, const Material* m, bool unused,
                             const Vector4D* na, const Vector4D* nb, const Vector4D* nc,
                             const Vector4D* nd, const Vector4D* ta, const Vector4D* tb,
                             const Vector4D* tc, const Vector4D* td);

    Vector4D* mapCoords[3];
};

}  // namespace korvel
