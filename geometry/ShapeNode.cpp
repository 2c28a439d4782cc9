#include "geometry/ShapeNode.h"

#include "geometry/Triangle.h"

#include <cmath>
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
    // Triangle::getNearestExcluded per triangle, then the shortest of those,
    // fused: the same distances (norm3D of q - p), the same tie rules (the
    // first found wins), without building vectors. Detail reduction spends
    // most of its time here.
    Vector4D* best = nullptr;
    distance = -1.0f;
    if (p == nullptr) {
        return nullptr;
    }
    const float closeEnough = 2e-4f * (std::fabs(p->x) + std::fabs(p->y) + std::fabs(p->z));
    for (const Triangle* t : triangles) {
        Vector4D* nearest = nullptr;
        float nearestDistance = 0.0f;
        for (Vector4D* q : t->points) {
            if (q == p) {
                continue;
            }
            const double dx = q->x - p->x;
            const double dy = q->y - p->y;
            const double dz = q->z - p->z;
            const auto d = static_cast<float>(std::sqrt(dx * dx + dy * dy + dz * dz));
            if ((!(d > closeEnough) || p->w != q->w) && *q == *p) {
                continue;
            }
            if (nearest == nullptr || d < nearestDistance) {
                nearest = q;
                nearestDistance = d;
            }
        }
        if (nearest != nullptr && (best == nullptr || nearestDistance < distance)) {
            best = nearest;
            distance = nearestDistance;
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
