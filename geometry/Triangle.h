#pragma once
// The unit of all geometry: three points, an optional normal per vertex and
// a material.
//
// Ownership is per triangle: an owned triangle allocated its six vectors and
// deletes them; a linked one (owned == false) points into the shared point
// table of an indexed shape and never deletes its points. Normals of a linked
// triangle belong to the indexed shape holding it, which frees them.

#include "core/ISerializable.h"
#include "core/Vector4D.h"

class Matrix4D;

namespace korvel {

class Material;

class Triangle : public ISerializable {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Placeholder for load(): the first and last points are equal on purpose.
    Triangle();
    Triangle(const Vector4D& a, const Vector4D& b, const Vector4D& c);
    Triangle(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Material* m,
             const Vector4D* na, const Vector4D* nb, const Vector4D* nc);
    // Adopts the three pointers and will delete them; warns because the
    // caller must not free or share them afterwards.
    Triangle(Vector4D* a, Vector4D* b, Vector4D* c, const Material* m);
    Triangle(const Triangle& other);
    // Values go into the target's existing point objects (linked ones too,
    // so whatever shares them moves along); the target becomes owned
    // whatever it was, and a linked target is reported.
    Triangle& operator=(const Triangle& other);
    ~Triangle() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;

    // The argument is unused; kept for callers that pass one.
    bool isTriangle(bool unused = false) const;
    // Same points, in any order.
    bool operator==(const Triangle& o) const;
    bool hasPoint(const Vector4D& p) const;
    bool hasNormals() const { return normals[0] != nullptr; }

    bool setNormal(const Vector4D& point, const Vector4D& n);
    Vector4D* getNormal(const Vector4D& point);
    const Vector4D* getNormal(const Vector4D& point) const;
    // Face normal (p1 - p0) x (p2 - p0), not normalised, w = 0.
    Vector4D getNormal() const;

    void getLimits(Vector4D& min, Vector4D& max) const;
    // The sum starts from (0, 0, 0, 1), so points with w = 1 give w = 4/3.
    Vector4D getIsoBaryCenter() const;
    // The nearest vertex not equal to *p; null when all three equal it.
    Vector4D* getNearestExcluded(const Vector4D* p) const;
    // Infinite line in both directions, no tolerance.
    bool isIntersectingLine(const Vector4D& origin, const Vector4D& direction) const;

    void transform(const Matrix4D& m);
    // Overwrites z (not w) with 1 after scaling; nothing relies on it.
    void enlarge(float f);
    // Swaps a linked point for another, by pointer identity.
    bool replaceLinked(Vector4D* old, Vector4D* replacement);

    void releasePoints();
    void releasePoint(int i);
    void releaseNormals();
    void releaseNormal(int i);
    void initializePoints();
    void initializeNormals();
    void copyPoints(const Vector4D* const* src);
    void copyNormals(const Vector4D* const* src);

    bool isOwned() const { return owned; }
    void setOwned(bool value) { owned = value; }
    bool getFlag() const { return flag; }
    void setFlag(bool value) { flag = value; }
    const Material* getMaterial() const { return material; }
    void setMaterial(const Material* m) { material = m; }

    Vector4D* points[3];
    Vector4D* normals[3];

protected:
    // Carried through copies and serialisation; nothing else reads it.
    bool flag;
    bool owned;
    const Material* material;
};

}  // namespace korvel
