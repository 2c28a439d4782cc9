#include "scene/IObject3D.h"

#include "geometry/Triangle.h"
#include "scene/Observer3D.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iostream>
#include <limits>
#include <string>

namespace korvel {

const char* IObject3D::className = "IObject3D";

IObject3D::IObject3D()
    : matrixObject(new Matrix4D(Matrix4D::getI4())),
      matrixOwned(true),
      matrixChanged(true),
      observer(nullptr),
      visible(true),
      elementKind(kindPlain),
      localMin(0.0f, 0.0f, 0.0f, 1.0f),
      localMax(1.0f, 1.0f, 1.0f, 1.0f),
      worldMin(0.0f, 0.0f, 0.0f, 1.0f),
      worldMax(1.0f, 1.0f, 1.0f, 1.0f),
      made(false)
{
}

IObject3D::IObject3D(const IObject3D& other)
    : ISerializable(other),
      Subject(),
      matrixObject(other.matrixObject != nullptr ? new Matrix4D(*other.matrixObject) : nullptr),
      matrixOwned(true),
      matrixChanged(true),
      observer(nullptr),
      visible(other.visible),
      elementKind(other.elementKind),
      boundaries(other.boundaries),
      localMin(other.localMin),
      localMax(other.localMax),
      worldMin(other.worldMin),
      worldMax(other.worldMax),
      made(false),
      name(other.name)
{
}

IObject3D::~IObject3D()
{
    releaseObserver();
    releaseMatrixObject();
}

void IObject3D::dump() const
{
    std::cout << "Matrix Object :";
    if (matrixObject != nullptr) {
        std::cout << *matrixObject;
    } else {
        std::cout << std::endl;
    }
    std::cout << "Min:" << localMin << " Max:" << localMax << std::endl;
}

bool IObject3D::load(std::istream& in)
{
    const bool result = ISerializable::load(in);
    in >> std::ws;
    if (std::isalpha(in.peek())) {
        std::string savedClass;
        in >> savedClass;
    }
    long long kind = 0;
    if (!(in >> kind) || kind < 0 || kind > std::numeric_limits<uint32_t>::max()) {
        std::cout << "[Error] element kind ill-formed in IObject3D load" << std::endl;
        return false;
    }
    elementKind = static_cast<uint32_t>(kind);
    return result;
}

bool IObject3D::save(std::ostream& out)
{
    const bool result = ISerializable::save(out);
    out << elementKind << '\n';
    return result;
}

void IObject3D::unchangeMatrixObject()
{
    matrixChanged = false;
}

void IObject3D::computeBoundingBoxtoRef()
{
    Vector4D corners[8];
    if (matrixObject == nullptr) {
        boxCorners(worldMin, worldMax, corners);
    } else {
        boxCorners(localMin, localMax, corners);
        for (Vector4D& corner : corners) {
            corner = *matrixObject * corner;
        }
    }
    layBoundaries(corners);
}

void IObject3D::layBoundaries(const Vector4D corners[8])
{
    // Each face as boxCorners numbers the corners, counter-clockwise seen
    // from outside while the matrix does not mirror; the line test looks at
    // neither side.
    static const int faces[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 4, 6, 2},
                                    {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}};
    static const int halves[2][3] = {{0, 1, 2}, {2, 3, 0}};
    if (boundaries.getTriangleCount() != 12) {
        boundaries.clear();
        for (int i = 0; i < 12; ++i) {
            boundaries.addTriangle(new Triangle());
        }
    }
    // An object that moves has its box laid again at the next pick: the
    // triangles stay, only their points are written.
    auto triangle = boundaries.getTriangles().begin();
    for (const auto& face : faces) {
        for (const auto& half : halves) {
            for (int k = 0; k < 3; ++k) {
                *(*triangle)->points[k] = corners[face[half[k]]];
            }
            ++triangle;
        }
    }
}

void IObject3D::computeWorldLimits()
{
    if (matrixObject == nullptr) {
        std::cout << "[Warning] IObject3D without object matrix, world limits kept" << std::endl;
        return;
    }
    worldMin = *matrixObject * localMin;
    worldMax = *matrixObject * localMax;
    boundariesStale = true;
}

void IObject3D::changeMatrixObject()
{
    matrixChanged = true;
    computeWorldLimits();
}

Observer3D* IObject3D::getObserver()
{
    if (observer == nullptr) {
        observer = new Observer3D(this);
    }
    return observer;
}

void IObject3D::changeView(const Matrix4D&)
{
}

void IObject3D::supplyElements(std::list<IObject3D*>& elements, int kinds)
{
    if ((elementKind & static_cast<uint32_t>(kinds)) != 0) {
        elements.push_back(this);
    }
}

bool IObject3D::reduceDetail(float)
{
    return false;
}

bool IObject3D::make()
{
    return true;
}

bool IObject3D::isMade() const
{
    return made;
}

void IObject3D::draw()
{
}

void IObject3D::hide()
{
    visible = false;
}

void IObject3D::show()
{
    visible = true;
}

void IObject3D::transform(const Matrix4D&)
{
}

bool IObject3D::isIntersectingBoundariesLine(const Vector4D& origin, const Vector4D& direction)
{
    if (matrixChanged || boundariesStale) {
        computeBoundingBoxtoRef();
        fitBoundariesSphere();
        matrixChanged = false;
        boundariesStale = false;
    }
    return isLineNearBoundaries(origin, direction) && boundaries.isIntersectingBoundariesLine(origin, direction);
}

void IObject3D::fitBoundariesSphere()
{
    // Around whatever the box holds, so that a kind laying its own box keeps
    // a true sphere.
    Vector4D sum(0.0f, 0.0f, 0.0f, 0.0f);
    int count = 0;
    for (const Triangle* t : boundaries.getTriangles()) {
        for (const Vector4D* p : t->points) {
            sum = sum + Vector4D(p->x, p->y, p->z, 0.0f);
            ++count;
        }
    }
    const float share = count > 0 ? 1.0f / static_cast<float>(count) : 0.0f;
    boundariesCentre = Vector4D(sum.x * share, sum.y * share, sum.z * share, 1.0f);
    boundariesRadius = 0.0f;
    for (const Triangle* t : boundaries.getTriangles()) {
        for (const Vector4D* p : t->points) {
            boundariesRadius = std::max(boundariesRadius, (*p - boundariesCentre).norm3D());
        }
    }
}

bool IObject3D::isLineNearBoundaries(const Vector4D& origin, const Vector4D& direction) const
{
    // Asked of every object at every pick: plain arithmetic, no square root.
    const float dx = direction.x;
    const float dy = direction.y;
    const float dz = direction.z;
    const float lengthSquared = dx * dx + dy * dy + dz * dz;
    if (!(lengthSquared > 0.0f) || !std::isfinite(boundariesRadius)) {
        return true;  // no way to tell: the triangles decide
    }
    const float wx = boundariesCentre.x - origin.x;
    const float wy = boundariesCentre.y - origin.y;
    const float wz = boundariesCentre.z - origin.z;
    // Distance from the centre to the line by the cross product (no
    // cancellation far from the origin), with a margin for rounding well
    // above what the triangle test itself resolves.
    const float cx = wy * dz - wz * dy;
    const float cy = wz * dx - wx * dz;
    const float cz = wx * dy - wy * dx;
    const float reach = boundariesRadius + 1e-4f * (boundariesRadius + std::fabs(wx) + std::fabs(wy) + std::fabs(wz));
    return !(cx * cx + cy * cy + cz * cz > reach * reach * lengthSquared);
}

bool IObject3D::getIntersectingLine(const Vector4D&, const Vector4D&, Triangle&)
{
    return false;
}

void IObject3D::updateLimits()
{
    computeWorldLimits();
}

void IObject3D::setToMinPointY()
{
    Vector4D lowest(0.0f, 0.0f, 0.0f, 1.0f);
    if (!getMinPointY(lowest)) {
        return;
    }
    lowest *= -1.0f;
    Matrix4D translation = Matrix4D::getI4();
    translation.setPosition(lowest.x, lowest.y, lowest.z);
    transform(translation);
}

bool IObject3D::getMinPointY(Vector4D&) const
{
    return false;
}

void IObject3D::setAge(float)
{
}

bool IObject3D::takeMatrix(Matrix4D* m, bool owned, const char* operation)
{
    if (m == nullptr) {
        std::cout << "[Error] " << operation << " in IObject3D given no matrix, the current one is kept"
                  << std::endl;
        return false;
    }
    // Handing back the matrix already held must not free it first.
    if (matrixOwned && matrixObject != m) {
        delete matrixObject;
    }
    matrixObject = m;
    changeMatrixObject();
    matrixOwned = owned;
    return true;
}

bool IObject3D::setMatriceObjectOwned(Matrix4D* m)
{
    return takeMatrix(m, true, "setMatriceObjectOwned");
}

bool IObject3D::setMatriceObjectLinked(Matrix4D* m)
{
    return takeMatrix(m, false, "setMatriceObjectLinked");
}

void IObject3D::releaseMatrixObject()
{
    if (matrixOwned) {
        delete matrixObject;
    }
    matrixObject = nullptr;
}

void IObject3D::releaseObserver()
{
    delete observer;
    observer = nullptr;
}

void IObject3D::deleteEachOnce(IObject3D** slots, int count)
{
    for (int i = 0; i < count; ++i) {
        IObject3D* object = slots[i];
        for (int later = i; later < count; ++later) {
            if (slots[later] == object) {
                slots[later] = nullptr;
            }
        }
        delete object;
    }
}

void IObject3D::boxCorners(const Vector4D& a, const Vector4D& b, Vector4D corners[8])
{
    for (int i = 0; i < 8; ++i) {
        corners[i] = Vector4D((i & 1) != 0 ? b.x : a.x, (i & 2) != 0 ? b.y : a.y, (i & 4) != 0 ? b.z : a.z, 1.0f);
    }
}

void IObject3D::placedBounds(const Matrix4D& m, const Vector4D& a, const Vector4D& b, Vector4D& low,
                             Vector4D& high)
{
    Vector4D corners[8];
    boxCorners(a, b, corners);
    low = m * corners[0];
    high = low;
    for (int i = 1; i < 8; ++i) {
        const Vector4D placed = m * corners[i];
        low.minimize(placed);
        high.maximize(placed);
    }
    low.w = 1.0f;
    high.w = 1.0f;
}

void IObject3D::setLocalLimits(const Vector4D& min, const Vector4D& max)
{
    localMin = min;
    localMax = max;
    computeWorldLimits();
}

}  // namespace korvel
