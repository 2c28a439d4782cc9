#pragma once
// An ordered list of triangles that the shape owns (a triangle soup): bounds,
// line queries, quad insertion. Every insertion made by the shape itself goes
// through the virtual addTriangle, so that a derived shape (the indexed one)
// sees each triangle.
//
// Beside the list, a map from triangle to its list position makes
// removeTriangle constant-time; detail reduction removes triangles by the
// tens of thousands.

#include "core/ISerializable.h"
#include "core/Vector4D.h"
#include "geometry/PointerMap.h"

#include <cstddef>
#include <list>

class Matrix4D;

namespace korvel {

class Material;
class Triangle;

class Shape : public ISerializable {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    Shape();
    // Deep copy: owned plain copies of every triangle, made by the triangle
    // copy constructor (a textured one loses its map coordinates).
    Shape(const Shape& other);
    // Clears, then copies the other's triangles through addTriangle.
    Shape& operator=(const Shape& other);
    ~Shape() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;
    bool isSerializable() override { return true; }

    virtual bool hasTriangle(const Triangle& t) const;
    // Takes ownership of t.
    virtual void addTriangle(Triangle* t);
    // Forgets the first entry holding t without deleting it.
    virtual bool removeTriangle(Triangle* t);
    virtual void transform(const Matrix4D& m);
    virtual void enlarge(float f);
    virtual void clear();
    virtual bool getLimits(Vector4D& min, Vector4D& max) const;
    virtual bool getMinPointY(Vector4D& p) const;
    virtual bool isIntersectingBoundariesLine(const Vector4D& origin, const Vector4D& direction) const;
    // The nearest triangle crossed by the line, in front of the origin and
    // facing it; copied into out (which becomes owned).
    virtual bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& out) const;

    void copyTriangles(const std::list<Triangle*>& list);
    // Room for count triangles in all: adding many at once then does not
    // regrow the position lookups on the way.
    void reserveTriangles(std::size_t count) { positions.reserve(count); }
    void releaseTriangles();

    // Degenerate quads (two equal consecutive corners) give one triangle.
    // Corners counter-clockwise seen from the side the face looks to. The
    // float and the boolean are unused.
    void addQuad(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Vector4D& d,
                 float unusedSize = 0.0f, bool unused = false);
    void addQuad(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Vector4D& d,
                 const Material* m, bool unused, const Vector4D* na, const Vector4D* nb,
                 const Vector4D* nc, const Vector4D* nd);

    // Moves the triangles of source carrying m (pointer identity) to the end
    // of this shape, through this shape's addTriangle. A triangle leaving an
    // indexed source comes with its own copies of its points: the source
    // keeps (or frees) its shared ones.
    void drainShapeOfMaterial(Shape* source, const Material* m);

    // Appends an axis-aligned cube of side 1 centred on the origin, each face
    // cut into division x division quads facing outwards. False (nothing
    // added) for a null shape or a division below 1.
    static bool generateCube(Shape* shape, int division = 1, const Material* m = nullptr);

    // Same triangles as multisets compared by Triangle equality; see .cpp.
    bool operator==(const Shape& o) const;

    const std::list<Triangle*>& getTriangles() const { return triangles; }
    std::size_t getTriangleCount() const { return triangles.size(); }

protected:
    // t is in the list (pointer identity), in constant time.
    bool isListed(Triangle* t) const { return positions.contains(t); }

    std::list<Triangle*> triangles;

private:
    PointerMap<Triangle, std::list<Triangle*>::iterator> positions;
    // Entries added while the same pointer was already listed (misuse, but
    // tolerated): removal then looks for the next occurrence.
    std::size_t duplicates = 0;
};

}  // namespace korvel
