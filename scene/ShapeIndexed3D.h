#pragma once
// A drawable object built from an indexed shape: one vertex per shared point
// with the point's own normal (smooth shading), the shape's triangles as the
// index array. Its detail can be lowered (reduceDetail), which is how the
// levels of detail of a model are generated.
//
// Index consistency, checked by make: every corner of every triangle is a
// point shared by the shape, numbered within the vertex data. A shape edited
// behind its back (points swapped in triangles directly) fails the check and
// is not uploaded. A degenerate triangle (two corners on one point) is
// consistent: it is uploaded and covers no pixel.

#include "scene/Shape3D.h"

namespace korvel {

class ShapeIndexed;

class ShapeIndexed3D : public Shape3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Holds an empty indexed shape of its own.
    ShapeIndexed3D();
    ShapeIndexed3D(const ShapeIndexed3D& other);
    ~ShapeIndexed3D() override = default;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    bool reduceDetail(float factor) override;
    bool canReduceDetail() const override { return shape != nullptr; }
    bool make() override;
    // A plain shape is indexed into a new ShapeIndexed (and deleted): this
    // object always holds an indexed shape or none.
    void setShape(Shape* value) override;
    void drainShapeOfMaterial(Shape* source, const Material* material) override;

    ShapeIndexed* getShapeIndexed() const;
};

}  // namespace korvel
