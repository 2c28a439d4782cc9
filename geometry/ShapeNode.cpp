#include "geometry/ShapeNode.h"

#include "geometry/Triangle.h"

#include <iostream>

namespace korvel {

const char* ShapeNode::className = "ShapeNode";

void ShapeNode::dump() const
{
    Object::dump();
    std::cout << "index: " << index << " triangles: " << triangles.size() << std::endl;
    if (point != nullptr) {
        point->dump();
    }
    normal.dump();
}

void ShapeNode::addTriangle(Triangle* t)
{
    triangles.push_back(t);
}

bool ShapeNode::hasTriangle(const Triangle& t) const
{
    for (const Triangle* u : triangles) {
        if (*u == t) {
            return true;
        }
    }
    return false;
}

bool ShapeNode::removeTriangle(Triangle* t)
{
    for (auto it = triangles.begin(); it != triangles.end(); ++it) {
        if (*it == t) {
            triangles.erase(it);
            return true;
        }
    }
    return false;
}

void ShapeNode::computeNormal()
{
    Vector4D sum;
    for (const Triangle* t : triangles) {
        sum += t->getNormal();
    }
    sum.w = 0.0f;
    sum.normalize3D();
    normal = sum;
}

Vector4D* ShapeNode::getMinDistancePointExcluded(Vector4D* p, float& distance) const
{
    Vector4D* best = nullptr;
    distance = -1.0f;
    if (p == nullptr) {
        return nullptr;
    }
    for (const Triangle* t : triangles) {
        Vector4D* q = t->getNearestExcluded(p);
        if (q == nullptr) {
            continue;
        }
        const float d = (*q - *p).norm3D();
        if (best == nullptr || d < distance) {
            best = q;
            distance = d;
        }
    }
    return best;
}

void ShapeNode::replaceCenter(Vector4D* newPoint, ShapeNode* target)
{
    for (Triangle* t : triangles) {
        if (!t->replaceLinked(point, newPoint) || target == nullptr) {
            continue;
        }
        // Judged by links, not values: two shared points can be equal in
        // value (equality is relative, not transitive), and a triangle that
        // links newPoint must be listed by its node, or the node could be
        // freed under it. One that collapsed by value is dropped afterwards
        // with the other degenerate ones.
        const int links = (t->points[0] == newPoint) + (t->points[1] == newPoint) + (t->points[2] == newPoint);
        if (links == 1) {
            target->addTriangle(t);
        }
    }
}

}  // namespace korvel
