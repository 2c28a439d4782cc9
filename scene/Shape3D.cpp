#include "scene/Shape3D.h"

#include "geometry/GPattern.h"
#include "geometry/Shape.h"
#include "geometry/TriangleTextured.h"
#include "render/GLBaseStructure.h"

#include <iostream>
#include <limits>
#include <new>

namespace korvel {

const char* Shape3D::className = "Shape3D";

Shape3D::Shape3D() : shape(new Shape()), textured(false) {}

Shape3D::Shape3D(Shape* ownedShape) : shape(ownedShape), textured(false) {}

Shape3D::Shape3D(const Object3D& other, Shape* ownedShape) : Object3D(other), shape(ownedShape), textured(false) {}

Shape3D::Shape3D(const Shape3D& other)
    : Object3D(other), shape(other.shape != nullptr ? new Shape(*other.shape) : nullptr), textured(false)
{
}

Shape3D::~Shape3D()
{
    releaseShape();
}

bool Shape3D::load(std::istream& in)
{
    const bool objectRead = Object3D::load(in);
    // The shape is read even when the program was not found, so that the
    // stream stays in step for what follows.
    if (shape == nullptr) {
        setShape(new Shape());  // an indexed kind indexes it
    }
    shape->clear();
    const bool shapeRead = shape->load(in);
    return objectRead && shapeRead;
}

bool Shape3D::save(std::ostream& out)
{
    const bool result = Object3D::save(out);
    if (shape != nullptr) {
        shape->save(out);
    } else {
        Shape empty;
        empty.save(out);
    }
    return result;
}

bool Shape3D::make()
{
    if (shape == nullptr) {
        std::cout << "[Error] shape is not defined in Shape3D" << std::endl;
        return false;
    }
    const std::size_t count = shape->getTriangleCount();
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max() / 3)) {
        std::cout << "[Error] shape too large for one vertex buffer in Shape3D" << std::endl;
        return false;
    }
    auto* vertices = new (std::nothrow) GPattern[count * 3];
    auto* indices = new (std::nothrow) unsigned[count * 3];
    if (vertices == nullptr || indices == nullptr) {
        delete[] vertices;
        delete[] indices;
        std::cout << "[Error] no memory for the vertex data of Shape3D" << std::endl;
        return false;
    }
    textured = false;
    std::size_t v = 0;
    for (const Triangle* t : shape->getTriangles()) {
        Vector4D normal = t->getNormal();
        normal.normalize3D();
        const auto* withUV = dynamic_cast<const TriangleTextured*>(t);
        textured = textured || withUV != nullptr;
        for (int corner = 0; corner < 3; ++corner, ++v) {
            vertices[v].setPoint(*t->points[corner]);
            vertices[v].setNormal(normal);
            if (withUV != nullptr && withUV->mapCoords[corner] != nullptr) {
                vertices[v].setUV(withUV->mapCoords[corner]->x, withUV->mapCoords[corner]->y);
            }
            indices[v] = static_cast<unsigned>(v);
        }
    }
    const int n = static_cast<int>(count * 3);
    return upload(vertices, n, indices, n) && Object3D::make();
}

bool Shape3D::upload(GPattern* vertices, int vertexCount, unsigned* indices, int indexCount)
{
    madeIndices.assign(indices, indices + indexCount);
    depthOrder.clear();
    made = false;
    if (structure == nullptr) {
        structure = new GLBaseStructure();
        structureOwned = true;
        structure->setShaderProgram(shaderProgram);
    }
    return structure->make(vertices, vertexCount, indices, indexCount);
}

void Shape3D::transform(const Matrix4D& m)
{
    if (shape != nullptr) {
        shape->transform(m);
        updateLimits();
    }
}

bool Shape3D::intersectPlaced(const Shape* placed, const Matrix4D* matrix, const Vector4D& origin,
                              const Vector4D& direction, Triangle& hit)
{
    if (placed == nullptr || matrix == nullptr) {
        return false;
    }
    Matrix4D inverse;
    if (!matrix->invert(inverse)) {
        std::cout << "[Error] shape3D Matrix not invertible ?" << std::endl;
        return false;
    }
    if (!placed->getIntersectingLine(inverse * origin, inverse * direction, hit)) {
        return false;
    }
    hit.transform(*matrix);
    return true;
}

bool Shape3D::getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit)
{
    return intersectPlaced(shape, matrixObject, origin, direction, hit);
}

void Shape3D::updateLimits()
{
    Vector4D min;
    Vector4D max;
    if (shape != nullptr && shape->getLimits(min, max)) {
        localMin = min;
        localMax = max;
    }
    computeWorldLimits();
}

bool Shape3D::getMinPointY(Vector4D& p) const
{
    return shape != nullptr && shape->getMinPointY(p);
}

void Shape3D::setShape(Shape* value)
{
    if (value == shape) {
        return;
    }
    delete shape;
    shape = value;
}

void Shape3D::drainShapeOfMaterial(Shape* source, const Material* material)
{
    if (shape == nullptr) {
        shape = new Shape();
    }
    shape->drainShapeOfMaterial(source, material);
}

void Shape3D::reorganize(const Matrix4D& view)
{
    if (shape == nullptr || matrixObject == nullptr) {
        return;
    }
    const Matrix4D toEye = view * *matrixObject;
    depthOrder.clear();
    int32_t i = 0;
    for (const Triangle* t : shape->getTriangles()) {
        depthOrder.push_back({i++, (toEye * t->getIsoBaryCenter()).norm3D()});
    }
    // Stable: triangles at the same distance keep their shape order.
    depthOrder.sort([](const DepthRecord& a, const DepthRecord& b) { return a.distance > b.distance; });

    unsigned* indices = structure != nullptr ? structure->getIndices() : nullptr;
    if (indices == nullptr || madeIndices.size() != shape->getTriangleCount() * 3) {
        return;  // not made, or the shape changed since: nothing to reorder
    }
    std::size_t slot = 0;
    for (const DepthRecord& record : depthOrder) {
        const std::size_t from = static_cast<std::size_t>(record.index) * 3;
        for (int k = 0; k < 3; ++k) {
            indices[slot++] = madeIndices[from + k];
        }
    }
    structure->reorganize();
}

void Shape3D::clear()
{
    if (shape != nullptr) {
        shape->clear();
    }
    depthOrder.clear();
    madeIndices.clear();
    if (structure != nullptr && structureOwned) {
        structure->clear();
    }
    made = false;
}

void Shape3D::setVerticesCanChanged()
{
    if (structure != nullptr) {
        structure->setVerticesCanChanged();
    }
}

void Shape3D::setIndicesCanChanged()
{
    if (structure != nullptr) {
        structure->setIndicesCanChanged();
    }
}

void Shape3D::releaseShape()
{
    delete shape;
    shape = nullptr;
}

}  // namespace korvel
