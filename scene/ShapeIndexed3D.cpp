#include "scene/ShapeIndexed3D.h"

#include "geometry/GPattern.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/ShapeNode.h"
#include "geometry/Triangle.h"

#include <iostream>
#include <limits>
#include <memory>
#include <new>

namespace korvel {

const char* ShapeIndexed3D::className = "ShapeIndexed3D";

ShapeIndexed3D::ShapeIndexed3D() : Shape3D(new ShapeIndexed()) {}

ShapeIndexed3D::ShapeIndexed3D(const ShapeIndexed3D& other)
    : Shape3D(static_cast<const Object3D&>(other),
              other.shape != nullptr ? new ShapeIndexed(*other.getShapeIndexed()) : nullptr)
{
}

ShapeIndexed* ShapeIndexed3D::getShapeIndexed() const
{
    // setShape lets nothing else in.
    return static_cast<ShapeIndexed*>(shape);
}

void ShapeIndexed3D::dump() const
{
    IObject3D::dump();
    if (shape != nullptr) {
        shape->dump();
    }
}

bool ShapeIndexed3D::reduceDetail(float factor)
{
    return shape != nullptr && getShapeIndexed()->reduceDetail(factor);
}

bool ShapeIndexed3D::make()
{
    ShapeIndexed* indexed = getShapeIndexed();
    if (indexed == nullptr) {
        std::cout << "[Error] shapeIndexed is not defined in ShapeIndexed3D" << std::endl;
        return false;
    }
    indexed->computeIndexes();
    const std::size_t pointCount = indexed->getPointCount();
    const std::size_t triangleCount = indexed->getTriangleCount();
    constexpr auto limit = static_cast<std::size_t>(std::numeric_limits<int>::max() / 3);
    if (pointCount > limit || triangleCount > limit) {
        std::cout << "[Error] indexes not consistent in ShapeIndexed3D" << std::endl;
        return false;
    }
    std::unique_ptr<GPattern[]> vertices(new (std::nothrow) GPattern[pointCount]);
    std::unique_ptr<unsigned[]> indices(new (std::nothrow) unsigned[triangleCount * 3]);
    if (vertices == nullptr || indices == nullptr) {
        std::cout << "[Error] no memory for the vertex data of ShapeIndexed3D" << std::endl;
        return false;
    }
    for (const auto& [point, node] : indexed->getPointsIndex()) {
        GPattern& vertex = vertices[static_cast<std::size_t>(node->index)];
        vertex.setPoint(*point);
        vertex.setNormal(node->normal);
    }
    std::size_t slot = 0;
    for (const Triangle* t : indexed->getTriangles()) {
        const ShapeNode* nodes[3];
        for (int corner = 0; corner < 3; ++corner) {
            nodes[corner] = indexed->getNode(t->points[corner]);
            if (nodes[corner] == nullptr || nodes[corner]->index < 0
                || static_cast<std::size_t>(nodes[corner]->index) >= pointCount) {
                std::cout << "[Error] indexes not consistent in ShapeIndexed3D" << std::endl;
                return false;
            }
        }
        for (const ShapeNode* node : nodes) {
            indices[slot++] = static_cast<unsigned>(node->index);
        }
    }
    textured = false;
    return upload(vertices.release(), static_cast<int>(pointCount), indices.release(), static_cast<int>(slot))
        && Object3D::make();
}

void ShapeIndexed3D::setShape(Shape* value)
{
    if (value != nullptr && dynamic_cast<ShapeIndexed*>(value) == nullptr) {
        auto* indexed = new ShapeIndexed();
        indexed->copyTriangles(value->getTriangles());
        delete value;
        value = indexed;
    }
    Shape3D::setShape(value);
}

void ShapeIndexed3D::drainShapeOfMaterial(Shape* source, const Material* material)
{
    if (shape == nullptr) {
        Shape3D::setShape(new ShapeIndexed());
    }
    Shape3D::drainShapeOfMaterial(source, material);
}

}  // namespace korvel
