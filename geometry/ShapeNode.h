#pragma once
// One shared point of an indexed shape and the triangles around it (linked,
// not owned). normal and index feed the indexed vertex data.

#include "core/Object.h"
#include "core/Vector4D.h"

#include <cstdint>
#include <vector>

namespace korvel {

class Triangle;

class ShapeNode : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    explicit ShapeNode(Vector4D* sharedPoint = nullptr) : point(sharedPoint)
    {
        // Most points of a mesh have six or so triangles around them, a few
        // more once neighbours have collapsed onto them.
        triangles.reserve(12);
    }
    // Nodes link triangles and a point that belong to their shape.
    ShapeNode(const ShapeNode&) = delete;
    ShapeNode& operator=(const ShapeNode&) = delete;

    void dump() const override;

    void addTriangle(Triangle* t);
    // Some listed triangle equals t (same points, any order).
    bool hasTriangle(const Triangle& t) const;
    // Unlinks the first entry holding t; false when none.
    bool removeTriangle(Triangle* t);
    // Exactly one triangle left.
    bool hasLastTriangle() const { return triangles.size() == 1; }
    bool isEmpty() const { return triangles.empty(); }

    // The point's normal: the sum of the face normals around it, each as long
    // as twice its triangle's area (so large faces weigh more and slivers
    // hardly count), normalised; w = 0. Null when the faces cancel out.
    void computeNormal();
    // The nearest other vertex of the surrounding triangles (the shortest
    // edge from p); distance is -1 and the result null without triangles.
    Vector4D* getMinDistancePointExcluded(Vector4D* p, float& distance) const;
    // Moves every surrounding triangle from this point onto newPoint; those
    // still proper afterwards (newPoint linked once) join target.
    void replaceCenter(Vector4D* newPoint, ShapeNode* target);

    // In the order they joined; a handful each, so a vector beats a list.
    std::vector<Triangle*> triangles;
    Vector4D normal;
    Vector4D* point;
    int32_t index = 0;

    // Where the point sits in the shape's rank structure, when it has one.
    uint32_t rankSlot = 0;
};

}  // namespace korvel
