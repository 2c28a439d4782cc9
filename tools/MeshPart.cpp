#include "tools/MeshPart.h"

#include "geometry/Shape.h"
#include "geometry/Triangle.h"

#include <cmath>
#include <utility>

namespace tools {

MeshPart::MeshPart(std::string materialName) : material(std::move(materialName)) {}

MeshPart::Cell MeshPart::cellOf(const Point3& p)
{
    return {static_cast<long long>(std::floor(p.x / weldDistance)),
            static_cast<long long>(std::floor(p.y / weldDistance)),
            static_cast<long long>(std::floor(p.z / weldDistance))};
}

int MeshPart::findNear(const Point3& p) const
{
    const Cell c = cellOf(p);
    for (long long dx = -1; dx <= 1; ++dx) {
        for (long long dy = -1; dy <= 1; ++dy) {
            for (long long dz = -1; dz <= 1; ++dz) {
                const auto found = cells.find({c[0] + dx, c[1] + dy, c[2] + dz});
                if (found == cells.end()) {
                    continue;
                }
                for (int i : found->second) {
                    const Point3& q = points[static_cast<std::size_t>(i)];
                    const double d = std::hypot(p.x - q.x, p.y - q.y, p.z - q.z);
                    if (d < weldDistance) {
                        return i;
                    }
                }
            }
        }
    }
    return -1;
}

int MeshPart::addPoint(const Point3& p)
{
    const int near = findNear(p);
    if (near >= 0) {
        return near;
    }
    const int index = static_cast<int>(points.size());
    points.push_back(p);
    cells[cellOf(p)].push_back(index);
    return index;
}

bool MeshPart::addTriangle(int a, int b, int c)
{
    if (a == b || b == c || c == a) {
        return false;
    }
    triangles.push_back({a, b, c});
    return true;
}

bool MeshPart::addTriangle(const Corners& p, const Corners& t)
{
    if (!addTriangle(p[0], p[1], p[2])) {
        return false;
    }
    uvTriangles.push_back(t);
    return true;
}

int MeshPart::addUV(double u, double v)
{
    const std::array<double, 2> key{u, v};
    const auto found = uvIndex.find(key);
    if (found != uvIndex.end()) {
        return found->second;
    }
    const int index = static_cast<int>(uvs.size());
    uvs.push_back(key);
    uvIndex.emplace(key, index);
    return index;
}

void MeshPart::addShape(const korvel::Shape& shape)
{
    for (const korvel::Triangle* t : shape.getTriangles()) {
        int corner[3];
        for (int i = 0; i < 3; ++i) {
            const Vector4D& p = *t->points[i];
            corner[i] = addPoint({p.x, p.y, p.z});
        }
        addTriangle(corner[0], corner[1], corner[2]);
    }
}

void MeshPart::transform(const std::function<Point3(const Point3&)>& f)
{
    cells.clear();
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = f(points[i]);
        cells[cellOf(points[i])].push_back(static_cast<int>(i));
    }
}

void MeshPart::flip()
{
    for (Corners& t : triangles) {
        std::swap(t[1], t[2]);
    }
    for (Corners& t : uvTriangles) {
        std::swap(t[1], t[2]);
    }
}

}  // namespace tools
