#pragma once
// One part of a generated model: its points written once and indexed by its
// triangles (counter-clockwise seen from outside), the material that binds
// its program, and for textured parts a texture coordinate per corner.
//
// Points are kept in double precision and welded on insertion: corners that
// the engine's primitives compute along different paths (a disc rim in
// double, a wall rim in float) end up as one point, so that a part made of
// several primitives is one closed surface.
#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace korvel {
class Shape;
}

namespace tools {

struct Point3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

class MeshPart {
public:
    using Corners = std::array<int, 3>;

    explicit MeshPart(std::string material);

    // Appends the shape's triangles; triangles that welding leaves without
    // area are dropped.
    void addShape(const korvel::Shape& shape);
    // The index of p, or of the point already closer than the weld distance.
    int addPoint(const Point3& p);
    // False (nothing added) when two corners are the same point.
    bool addTriangle(int a, int b, int c);
    // A textured triangle: point indices and texture coordinate indices.
    bool addTriangle(const Corners& points, const Corners& uvs);
    // The index of (u, v), shared with an equal pair added before.
    int addUV(double u, double v);
    // Moves every point; a mapping that mirrors must be followed by flip().
    void transform(const std::function<Point3(const Point3&)>& f);
    // Reverses the winding of every triangle.
    void flip();

    const std::string& getMaterial() const { return material; }
    const std::vector<Point3>& getPoints() const { return points; }
    const std::vector<Corners>& getTriangles() const { return triangles; }
    const std::vector<std::array<double, 2>>& getUVs() const { return uvs; }
    // One entry per triangle for textured parts, empty otherwise.
    const std::vector<Corners>& getUVTriangles() const { return uvTriangles; }
    bool isTextured() const { return !uvTriangles.empty(); }

    static constexpr double weldDistance = 1e-4;

private:
    using Cell = std::array<long long, 3>;
    static Cell cellOf(const Point3& p);
    int findNear(const Point3& p) const;

    std::string material;
    std::vector<Point3> points;
    std::vector<Corners> triangles;
    std::vector<std::array<double, 2>> uvs;
    std::vector<Corners> uvTriangles;
    std::map<Cell, std::vector<int>> cells;
    std::map<std::array<double, 2>, int> uvIndex;
};

}  // namespace tools
