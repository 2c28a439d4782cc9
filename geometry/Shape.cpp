#include "geometry/Shape.h"

#include "core/Matrix4D.h"
#include "geometry/Triangle.h"
#include "geometry/TriangleTextured.h"

#include <cctype>
#include <iostream>
#include <unordered_set>
#include <vector>

namespace korvel {

const char* Shape::className = "Shape";

namespace {

Triangle* ownedCopyOf(const Triangle& t)
{
    if (const auto* textured = dynamic_cast<const TriangleTextured*>(&t)) {
        return new TriangleTextured(*textured);
    }
    return new Triangle(t);
}

}  // namespace

Shape::Shape() = default;

Shape::Shape(const Shape& other) : ISerializable(other)
{
    // Not through addTriangle: a derived copy re-indexes on its own. Plain
    // triangles: map coordinates are carried only by a textured triangle's
    // own copy operations.
    for (const Triangle* t : other.triangles) {
        auto* copy = new Triangle(*t);
        triangles.push_back(copy);
        positions.insert(copy, std::prev(triangles.end()));
    }
}

Shape& Shape::operator=(const Shape& other)
{
    if (this != &other) {
        ISerializable::operator=(other);
        clear();
        copyTriangles(other.triangles);
    }
    return *this;
}

Shape::~Shape()
{
    releaseTriangles();
}

void Shape::dump() const
{
    Object::dump();
    std::cout << "Nbre of triangle in Shape: " << triangles.size() << std::endl;
    for (const Triangle* t : triangles) {
        t->dump();
    }
}

bool Shape::save(std::ostream& out)
{
    const bool result = ISerializable::save(out);
    out << triangles.size() << '\n';
    for (Triangle* t : triangles) {
        t->save(out);
    }
    return result;
}

bool Shape::load(std::istream& in)
{
    const bool result = ISerializable::load(in);
    // save() starts with the class name; skip it when the caller has not.
    in >> std::ws;
    if (std::isalpha(in.peek())) {
        std::string name;
        in >> name;
    }
    long count = 0;
    if (!(in >> count)) {
        std::cout << "[Error] triangle count ill-formed in Shape load" << std::endl;
        return false;
    }
    for (long i = 0; i < count; ++i) {
        auto* t = new Triangle();
        if (!t->load(in)) {
            delete t;
            std::cout << "[Error] Shape load stopped at triangle " << i << " of " << count << std::endl;
            return false;
        }
        addTriangle(t);
    }
    return result;
}

bool Shape::hasTriangle(const Triangle& t) const
{
    for (const Triangle* u : triangles) {
        if (*u == t) {
            return true;
        }
    }
    return false;
}

void Shape::addTriangle(Triangle* t)
{
    if (t == nullptr) {
        std::cout << "[Warning] attempt to add a null triangle to Shape" << std::endl;
        return;
    }
    triangles.push_back(t);
    if (!positions.insert(t, std::prev(triangles.end()))) {
        ++duplicates;
    }
}

bool Shape::removeTriangle(Triangle* t)
{
    const auto* found = positions.find(t);
    if (found == nullptr) {
        return false;
    }
    auto next = triangles.erase(*found);
    positions.erase(t);
    if (duplicates > 0) {
        for (; next != triangles.end(); ++next) {
            if (*next == t) {
                positions.insert(t, next);
                --duplicates;
                break;
            }
        }
    }
    return true;
}

void Shape::transform(const Matrix4D& m)
{
    for (Triangle* t : triangles) {
        t->transform(m);
    }
}

void Shape::enlarge(float f)
{
    Matrix4D m;
    m.setI4();
    m.enlarge(f);
    transform(m);
}

void Shape::clear()
{
    releaseTriangles();
}

void Shape::releaseTriangles()
{
    if (duplicates == 0) {
        for (Triangle* t : triangles) {
            delete t;
        }
    } else {
        std::unordered_set<Triangle*> deleted;
        for (Triangle* t : triangles) {
            if (deleted.insert(t).second) {
                delete t;
            }
        }
    }
    triangles.clear();
    positions.clear();
    duplicates = 0;
}

void Shape::copyTriangles(const std::list<Triangle*>& list)
{
    // A copy of the list first: list may be our own.
    const std::vector<Triangle*> sources(list.begin(), list.end());
    positions.reserve(positions.size() + sources.size());
    for (const Triangle* t : sources) {
        addTriangle(ownedCopyOf(*t));
    }
}

bool Shape::getLimits(Vector4D& min, Vector4D& max) const
{
    if (triangles.empty()) {
        return false;
    }
    bool first = true;
    for (const Triangle* t : triangles) {
        Vector4D lo;
        Vector4D hi;
        t->getLimits(lo, hi);
        if (first) {
            min = lo;
            max = hi;
            first = false;
        } else {
            min.minimize(lo);
            max.maximize(hi);
        }
    }
    min.w = 1.0f;
    max.w = 1.0f;
    return true;
}

bool Shape::getMinPointY(Vector4D& p) const
{
    if (triangles.empty()) {
        return false;
    }
    bool first = true;
    Vector4D best;
    for (const Triangle* t : triangles) {
        Vector4D lo;
        Vector4D hi;
        t->getLimits(lo, hi);
        if (first || lo.y < best.y) {
            best = lo;
            first = false;
        }
    }
    p = best;
    p.w = 1.0f;
    return true;
}

bool Shape::isIntersectingBoundariesLine(const Vector4D& origin, const Vector4D& direction) const
{
    for (const Triangle* t : triangles) {
        if (t->isIntersectingLine(origin, direction)) {
            return true;
        }
    }
    return false;
}

bool Shape::getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& out) const
{
    const Triangle* best = nullptr;
    float bestDistance = 0.0f;
    for (const Triangle* t : triangles) {
        if (!t->isIntersectingLine(origin, direction)) {
            continue;
        }
        const Vector4D w = t->getIsoBaryCenter() - origin;
        // The line test accepts both directions; keep what lies ahead and
        // faces the line.
        if (w.scal3D(direction) < 0.0f || direction.scal3D(t->getNormal()) > 0.0f) {
            continue;
        }
        const float d = w.norm3D();
        if (best == nullptr || d < bestDistance) {
            best = t;
            bestDistance = d;
        }
    }
    if (best == nullptr) {
        return false;
    }
    out = *best;
    return true;
}

void Shape::addQuad(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Vector4D& d, float, bool)
{
    addQuad(a, b, c, d, nullptr, false, nullptr, nullptr, nullptr, nullptr);
}

void Shape::addQuad(const Vector4D& a, const Vector4D& b, const Vector4D& c, const Vector4D& d,
                    const Material* m, bool, const Vector4D* na, const Vector4D* nb,
                    const Vector4D* nc, const Vector4D* nd)
{
    if (a == b || b == c) {
        addTriangle(new Triangle(a, c, d, m, na, nc, nd));
    } else if (c == d) {
        addTriangle(new Triangle(a, b, d, m, na, nb, nd));
    } else if (d == a) {
        addTriangle(new Triangle(a, b, c, m, na, nb, nc));
    } else {
        addTriangle(new Triangle(a, b, c, m, na, nb, nc));
        addTriangle(new Triangle(c, d, a, m, nc, nd, na));
    }
}

void Shape::drainShapeOfMaterial(Shape* source, const Material* m)
{
    if (source == nullptr || source == this) {
        return;
    }
    std::vector<Triangle*> moving;
    for (Triangle* t : source->triangles) {
        if (t->getMaterial() == m) {
            moving.push_back(t);
        }
    }
    for (Triangle* t : moving) {
        const bool linked = !t->isOwned();
        const Vector4D corners[3] = {*t->points[0], *t->points[1], *t->points[2]};
        source->removeTriangle(t);
        // An indexed source hands it back owned; a linked one from anywhere
        // else still points into someone's table.
        if (linked && !t->isOwned()) {
            for (int i = 0; i < 3; ++i) {
                t->points[i] = new Vector4D(corners[i]);
            }
            t->setOwned(true);
        }
        addTriangle(t);
    }
}

bool Shape::generateCube(Shape* shape, int division, const Material* m)
{
    if (shape == nullptr || division < 1) {
        std::cout << "[Warning] cube generation needs a shape and a division of at least 1" << std::endl;
        return false;
    }
    // Each face: its outward normal n and two in-plane axes u, v with
    // u x v = n, so corners walked along u then v are counter-clockwise
    // seen from outside.
    struct Face {
        Vector4D n;
        Vector4D u;
        Vector4D v;
    };
    const Face faces[6] = {
        {Vector4D(1, 0, 0, 0), Vector4D(0, 1, 0, 0), Vector4D(0, 0, 1, 0)},
        {Vector4D(-1, 0, 0, 0), Vector4D(0, 0, 1, 0), Vector4D(0, 1, 0, 0)},
        {Vector4D(0, 1, 0, 0), Vector4D(0, 0, 1, 0), Vector4D(1, 0, 0, 0)},
        {Vector4D(0, -1, 0, 0), Vector4D(1, 0, 0, 0), Vector4D(0, 0, 1, 0)},
        {Vector4D(0, 0, 1, 0), Vector4D(1, 0, 0, 0), Vector4D(0, 1, 0, 0)},
        {Vector4D(0, 0, -1, 0), Vector4D(0, 1, 0, 0), Vector4D(1, 0, 0, 0)},
    };
    const float step = 1.0f / static_cast<float>(division);
    for (const Face& f : faces) {
        const Vector4D centre = f.n * 0.5f + Vector4D(0, 0, 0, 1);
        auto corner = [&](int i, int j) {
            return centre + f.u * (-0.5f + step * static_cast<float>(i))
                          + f.v * (-0.5f + step * static_cast<float>(j));
        };
        for (int i = 0; i < division; ++i) {
            for (int j = 0; j < division; ++j) {
                shape->addQuad(corner(i, j), corner(i + 1, j), corner(i + 1, j + 1), corner(i, j + 1),
                               m, false, &f.n, &f.n, &f.n, &f.n);
            }
        }
    }
    return true;
}

bool Shape::operator==(const Shape& o) const
{
    if (triangles.size() != o.triangles.size()) {
        return false;
    }
    std::list<const Triangle*> working(triangles.begin(), triangles.end());
    for (const Triangle* t : o.triangles) {
        const Triangle* match = nullptr;
        for (const Triangle* u : working) {
            if (*u == *t) {
                match = u;
                break;
            }
        }
        if (match == nullptr) {
            return false;
        }
        // Every entry of that pointer goes, not just the first one.
        working.remove(match);
    }
    return true;
}

}  // namespace korvel
