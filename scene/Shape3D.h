#pragma once
// A drawable object built from a triangle shape that it owns. Every triangle
// gets three vertices of its own (flat shading: each carries the face
// normal), so the shape may mix any triangles; textured ones bring their
// texture coordinates.
//
// The geometry is in the object's own frame; the object matrix places it.
// transform moves the geometry itself. After a change of the shape, make
// uploads it again.
//
// Blended objects are drawn back to front by reorganize, which reorders the
// index buffer by the distance of each triangle to the eye.

#include "scene/Object3D.h"

#include <cstdint>
#include <list>
#include <vector>

namespace korvel {

class Material;
class Shape;

class Shape3D : public Object3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // One depth-ordering record: a triangle (its rank in the shape) and its
    // distance to the eye.
    struct DepthRecord {
        int32_t index;
        float distance;
    };

    // Holds an empty shape of its own.
    Shape3D();
    // Deep copy of the shape (triangles copied, textured ones stay textured).
    Shape3D(const Shape3D& other);
    ~Shape3D() override;

    const char* getInstanceClassName() const override { return className; }
    // The Object3D part, then the shape.
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;
    bool make() override;
    void transform(const Matrix4D& m) override;
    bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit) override;
    // Local limits from the shape, then the world limits; an empty shape
    // keeps the limits it had.
    void updateLimits() override;
    // The shape's lowest point, in the object's own frame.
    bool getMinPointY(Vector4D& p) const override;

    // Takes ownership of shape (null leaves the object without one).
    virtual void setShape(Shape* value);
    // Moves here the triangles of source that carry material (identity).
    virtual void drainShapeOfMaterial(Shape* source, const Material* material);
    // Orders the triangles back to front as seen through view and uploads
    // the new index order.
    virtual void reorganize(const Matrix4D& view);
    // Empties the shape, the ordering and the GPU data.
    virtual void clear();

    void setVerticesCanChanged();
    void setIndicesCanChanged();
    void releaseShape();

    Shape* getShape() const { return shape; }
    bool isTextured() const { return textured; }
    const std::list<DepthRecord>& getDepthOrder() const { return depthOrder; }

    // The nearest triangle of shape crossed by the line, for an object placed
    // by matrix: the line goes into the object's frame, the hit comes back.
    static bool intersectPlaced(const Shape* shape, const Matrix4D* matrix, const Vector4D& origin,
                                const Vector4D& direction, Triangle& hit);

protected:
    // Kinds holding another shape kind start from theirs (owned, may be null).
    explicit Shape3D(Shape* ownedShape);
    Shape3D(const Object3D& other, Shape* ownedShape);

    // Hands the arrays to the structure (which owns them from then on) and
    // keeps the index order for reorganize.
    bool upload(GPattern* vertices, int vertexCount, unsigned* indices, int indexCount);

    Shape* shape;
    std::list<DepthRecord> depthOrder;
    bool textured;
    // Each triangle's three indices as made, in shape order.
    std::vector<unsigned> madeIndices;
};

}  // namespace korvel
