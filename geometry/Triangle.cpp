#include "geometry/Triangle.h"

#include "core/Matrix4D.h"

#include <cctype>
#include <cmath>
#include <iostream>

namespace korvel {

const char* Triangle::className = "Triangle";

namespace {

// Reads one '0' or '1' written without separator; false on anything else.
bool readBit(std::istream& in, bool& bit)
{
    char c = 0;
    if (!(in >> c) || (c != '0' && c != '1')) {
        return false;
    }
    bit = (c == '1');
    return true;
}

}  // namespace

Triangle::Triangle() : flag(false), owned(true), material(nullptr)
{
    points[0] = new Vector4D(0.0f, 0.0f, 1.0f, 1.0f);
    points[1] = new Vector4D(1.0f, 0.0f, 1.0f, 1.0f);
    points[2] = new Vector4D(0.0f, 0.0f, 1.0f, 1.0f);
    initializeNormals();
}

Triangle::Triangle(const Vector4D& a, const Vector4D& b, const Vector4D& c)
    : flag(false), owned(true), material(nullptr)
{
    points[0] = new Vector4D(a);
    points[1] = new Vector4D(b);
    points[2] = new Vector4D(c);
    initializeNormals();
}

Triangle::Triangle(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Material* m,
                   const Vector4D* na, const Vector4D* nb, const Vector4D* nc)
    : flag(false), owned(true), material(m)
{
    points[0] = new Vector4D(a);
    points[1] = new Vector4D(b);
    points[2] = new Vector4D(c);
    const Vector4D* n[3] = {na, nb, nc};
    for (int i = 0; i < 3; ++i) {
        normals[i] = n[i] != nullptr ? new Vector4D(*n[i]) : nullptr;
    }
}

Triangle::Triangle(Vector4D* a, Vector4D* b, Vector4D* c, const Material* m)
    : flag(false), owned(true), material(m)
{
    points[0] = a;
    points[1] = b;
    points[2] = c;
    initializeNormals();
    std::cout << "[Warning] use of dangerous constructor !" << std::endl;
}

Triangle::Triangle(const Triangle& other)
    : ISerializable(other), flag(other.flag), owned(true), material(other.material)
{
    initializePoints();
    initializeNormals();
    copyPoints(other.points);
    copyNormals(other.normals);
}

Triangle& Triangle::operator=(const Triangle& other)
{
    if (this == &other) {
        return *this;
    }
    if (!owned) {
        // The values go into the linked points all the same, so the shape
        // sharing them moves with this triangle; but the triangle now
        // claims points that the shape will free too.
        std::cout << "[ERROR] assignment to not owned triangle" << std::endl;
    }
    ISerializable::operator=(other);
    owned = true;
    material = other.material;
    flag = other.flag;
    copyPoints(other.points);
    copyNormals(other.normals);
    return *this;
}

Triangle::~Triangle()
{
    releasePoints();
    releaseNormals();
}

void Triangle::dump() const
{
    std::cout << "Points" << std::endl;
    for (const Vector4D* p : points) {
        if (p != nullptr) {
            p->dump();
        }
    }
    std::cout << "Normals" << std::endl;
    for (const Vector4D* n : normals) {
        if (n != nullptr) {
            n->dump();
        }
    }
}

bool Triangle::save(std::ostream& out)
{
    const bool result = ISerializable::save(out);
    out << (flag ? 1 : 0) << (owned ? 1 : 0);
    for (const Vector4D* p : points) {
        if (p != nullptr) {
            p->save(out);
        } else {
            Vector4D().save(out);
        }
    }
    for (const Vector4D* n : normals) {
        if (n != nullptr) {
            out << "1";
            n->save(out);
        } else {
            out << "0";
        }
    }
    return result;
}

bool Triangle::load(std::istream& in)
{
    const bool result = ISerializable::load(in);
    // save() starts with the class name; skip it when the caller has not.
    in >> std::ws;
    if (std::isalpha(in.peek())) {
        std::string name;
        in >> name;
    }
    bool flagRead = false;
    bool ownedRead = false;
    if (!readBit(in, flagRead) || !readBit(in, ownedRead)) {
        std::cout << "[Error] triangle flags ill-formed in load" << std::endl;
        return false;
    }
    flag = flagRead;
    if (ownedRead && !owned) {
        // Never write values through links that another shape shares.
        initializePoints();
    }
    owned = owned || ownedRead;
    for (Vector4D*& p : points) {
        if (p == nullptr) {
            p = new Vector4D();
        }
        p->load(in);
    }
    for (int i = 0; i < 3; ++i) {
        bool present = false;
        if (!readBit(in, present)) {
            std::cout << "[Error] triangle normal flag ill-formed in load" << std::endl;
            return false;
        }
        if (present) {
            if (normals[i] == nullptr) {
                normals[i] = new Vector4D();
            }
            normals[i]->load(in);
        } else {
            releaseNormal(i);
        }
    }
    if (in.fail()) {
        std::cout << "[Error] triangle values ill-formed in load" << std::endl;
        return false;
    }
    return result;
}

bool Triangle::isTriangle(bool) const
{
    return !(*points[0] == *points[1] || *points[1] == *points[2] || *points[0] == *points[2]);
}

bool Triangle::operator==(const Triangle& o) const
{
    for (const Vector4D* p : points) {
        if (!o.hasPoint(*p)) {
            return false;
        }
    }
    return true;
}

bool Triangle::hasPoint(const Vector4D& p) const
{
    return *points[0] == p || *points[1] == p || *points[2] == p;
}

bool Triangle::setNormal(const Vector4D& point, const Vector4D& n)
{
    for (int i = 0; i < 3; ++i) {
        if (*points[i] == point) {
            if (normals[i] == nullptr) {
                normals[i] = new Vector4D(n);
            } else {
                *normals[i] = n;
            }
            return true;
        }
    }
    return false;
}

Vector4D* Triangle::getNormal(const Vector4D& point)
{
    for (int i = 0; i < 3; ++i) {
        if (*points[i] == point) {
            return normals[i];
        }
    }
    return nullptr;
}

const Vector4D* Triangle::getNormal(const Vector4D& point) const
{
    return const_cast<Triangle*>(this)->getNormal(point);
}

Vector4D Triangle::getNormal() const
{
    const Vector4D e1 = *points[1] - *points[0];
    const Vector4D e2 = *points[2] - *points[0];
    return e1.pvect3D(e2);
}

void Triangle::getLimits(Vector4D& min, Vector4D& max) const
{
    min = *points[0];
    max = *points[0];
    for (int i = 1; i < 3; ++i) {
        min.minimize(*points[i]);
        max.maximize(*points[i]);
    }
}

Vector4D Triangle::getIsoBaryCenter() const
{
    Vector4D sum(0.0f, 0.0f, 0.0f, 1.0f);
    for (const Vector4D* p : points) {
        sum += *p;
    }
    return sum * (1.0f / 3.0f);
}

Vector4D* Triangle::getNearestExcluded(const Vector4D* p) const
{
    // Equal points lie within 0.0001 of each other relative to their
    // coordinates, so the (costly) equality test is needed only for points
    // that close; the same point object is equal to itself.
    const float closeEnough = 2e-4f * (std::fabs(p->x) + std::fabs(p->y) + std::fabs(p->z));
    Vector4D* best = nullptr;
    float bestDistance = 0.0f;
    for (Vector4D* q : points) {
        if (q == p) {
            continue;
        }
        const float d = (*q - *p).norm3D();
        if ((!(d > closeEnough) || p->w != q->w) && *q == *p) {
            continue;
        }
        if (best == nullptr || d < bestDistance) {
            best = q;
            bestDistance = d;
        }
    }
    return best;
}

bool Triangle::isIntersectingLine(const Vector4D& origin, const Vector4D& direction) const
{
    bool first = false;
    for (int i = 0; i < 3; ++i) {
        const Vector4D e = *points[(i + 1) % 3] - *points[i];
        const Vector4D n = (*points[i] - origin).pvect3D(e);
        const bool side = n.scal3D(direction) >= 0.0f;
        if (i == 0) {
            first = side;
        } else if (side != first) {
            return false;
        }
    }
    return true;
}

void Triangle::transform(const Matrix4D& m)
{
    for (Vector4D* p : points) {
        *p *= m;
    }
    for (Vector4D* n : normals) {
        if (n != nullptr) {
            *n *= m;
            n->normalize3D();
        }
    }
}

void Triangle::enlarge(float f)
{
    for (Vector4D* p : points) {
        *p *= f;
        p->z = 1.0f;
    }
}

bool Triangle::replaceLinked(Vector4D* old, Vector4D* replacement)
{
    if (owned) {
        std::cout << "[warning] attempt to replace owned points by links in Triangle" << std::endl;
        return false;
    }
    for (Vector4D*& p : points) {
        if (p == old) {
            p = replacement;
            return true;
        }
    }
    std::cout << "[warning] attempt to replace no existing linked point in Triangle" << std::endl;
    return false;
}

void Triangle::releasePoints()
{
    for (int i = 0; i < 3; ++i) {
        releasePoint(i);
    }
}

void Triangle::releasePoint(int i)
{
    if (i < 0 || i > 2) {
        return;
    }
    if (owned) {
        delete points[i];
    }
    points[i] = nullptr;
}

void Triangle::releaseNormals()
{
    for (int i = 0; i < 3; ++i) {
        releaseNormal(i);
    }
}

void Triangle::releaseNormal(int i)
{
    if (i < 0 || i > 2) {
        return;
    }
    if (owned) {
        delete normals[i];
    }
    normals[i] = nullptr;
}

void Triangle::initializePoints()
{
    points[0] = points[1] = points[2] = nullptr;
}

void Triangle::initializeNormals()
{
    normals[0] = normals[1] = normals[2] = nullptr;
}

void Triangle::copyPoints(const Vector4D* const* src)
{
    for (int i = 0; i < 3; ++i) {
        if (points[i] != nullptr) {
            *points[i] = *src[i];
        } else {
            points[i] = new Vector4D(*src[i]);
        }
    }
}

void Triangle::copyNormals(const Vector4D* const* src)
{
    for (int i = 0; i < 3; ++i) {
        if (src[i] == nullptr) {
            releaseNormal(i);
        } else if (normals[i] != nullptr) {
            *normals[i] = *src[i];
        } else {
            normals[i] = new Vector4D(*src[i]);
        }
    }
}

}  // namespace korvel
