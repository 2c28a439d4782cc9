#pragma once
// One shared point of an indexed shape and the triangles around it (linked,
// not owned). normal and index feed the indexed vertex data.

#include "core/Object.h"
#include "core/Vector4D.h"

#include <cstdint>
#include <cstring>

namespace korvel {

class Triangle;

// The triangles around a point, kept inside the node while they fit: a
// measure then reads them from the node's own memory instead of a separate
// block, and most points never allocate. Vector-like, in insertion order.
class NodeTriangles {
public:
    static constexpr uint32_t inlineCapacity = 8;

    NodeTriangles() = default;
    ~NodeTriangles() { release(); }
    NodeTriangles(const NodeTriangles&) = delete;
    NodeTriangles& operator=(const NodeTriangles&) = delete;

    Triangle** begin() { return items; }
    Triangle** end() { return items + count; }
    Triangle* const* begin() const { return items; }
    Triangle* const* end() const { return items + count; }
    Triangle** data() { return items; }
    Triangle* const* data() const { return items; }
    std::size_t size() const { return count; }
    bool empty() const { return count == 0; }
    Triangle* operator[](std::size_t i) const { return items[i]; }

    void push_back(Triangle* t)
    {
        if (count == capacity) {
            grow();
        }
        items[count++] = t;
    }
    // Keeps the order of the others, as a vector would.
    Triangle** erase(Triangle** at)
    {
        std::memmove(at, at + 1, (end() - at - 1) * sizeof(Triangle*));
        --count;
        return at;
    }
    void clear() { count = 0; }
    // Moves all of other's entries here (other ends empty); a heap block
    // changes hands instead of being copied.
    void takeFrom(NodeTriangles& other)
    {
        release();
        if (other.items != other.local) {
            items = other.items;
            capacity = other.capacity;
        } else {
            items = local;
            capacity = inlineCapacity;
            std::memcpy(local, other.local, other.count * sizeof(Triangle*));
        }
        count = other.count;
        other.items = other.local;
        other.capacity = inlineCapacity;
        other.count = 0;
    }

private:
    void grow()
    {
        Triangle** larger = new Triangle*[capacity * 2];
        std::memcpy(larger, items, count * sizeof(Triangle*));
        release();
        items = larger;
        capacity *= 2;
    }
    void release()
    {
        if (items != local) {
            delete[] items;
        }
    }

    Triangle** items = local;
    uint32_t count = 0;
    uint32_t capacity = inlineCapacity;
    Triangle* local[inlineCapacity];
};

class ShapeNode : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    explicit ShapeNode(Vector4D* sharedPoint = nullptr) : point(sharedPoint) {}
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

    // In the order they joined; most points have six or so.
    NodeTriangles triangles;
    Vector4D normal;
    Vector4D* point;
    int32_t index = 0;

    // Where the point sits in the shape's rank structure, when it has one.
    uint32_t rankSlot = 0;
};

}  // namespace korvel
