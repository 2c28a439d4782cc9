#include "geometry/Material.h"
#include "geometry/Shape.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"
#include "geometry/TriangleTextured.h"
#include "support/CaptureStdout.h"

#include "core/Matrix4D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using korvel::Material;
using korvel::Shape;
using korvel::ShapeIndexed;
using korvel::Sphere;
using korvel::Triangle;
using korvel::TriangleTextured;

namespace {

Vector4D pt(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

bool samePoints(const Triangle& t, const Vector4D& a, const Vector4D& b, const Vector4D& c)
{
    return *t.points[0] == a && *t.points[1] == b && *t.points[2] == c;
}

TEST(ShapeTest, QuadInsertionFollowsTheDegenerateRules)
{
    const Vector4D a = pt(0, 0, 0), b = pt(1, 0, 0), c = pt(1, 1, 0), d = pt(0, 1, 0);
    const Vector4D na(1, 0, 0, 0), nb(0, 1, 0, 0), nc(0, 0, 1, 0), nd(1, 1, 0, 0);
    struct Case {
        const char* name;
        Vector4D a, b, c, d;
        int expected;
    };
    const Case cases[] = {
        {"proper", a, b, c, d, 2}, {"a == b", a, a, c, d, 1}, {"b == c", a, b, b, d, 1},
        {"c == d", a, b, c, c, 1}, {"d == a", a, b, c, a, 1},
    };
    for (const Case& k : cases) {
        Shape s;
        s.addQuad(k.a, k.b, k.c, k.d);
        EXPECT_EQ(s.getTriangleCount(), static_cast<std::size_t>(k.expected)) << k.name;
    }
    const Material m("m");
    Shape s;
    s.addQuad(a, b, c, d, &m, false, &na, &nb, &nc, &nd);
    ASSERT_EQ(s.getTriangleCount(), 2u);
    const Triangle* first = s.getTriangles().front();
    const Triangle* second = s.getTriangles().back();
    EXPECT_TRUE(samePoints(*first, a, b, c));
    EXPECT_TRUE(samePoints(*second, c, d, a));
    EXPECT_TRUE(*second->normals[1] == nd);
    EXPECT_EQ(second->getMaterial(), &m);

    Shape one;
    one.addQuad(a, b, c, c, &m, false, &na, &nb, &nc, &nd);
    EXPECT_TRUE(samePoints(*one.getTriangles().front(), a, b, c));  // (a, b, d) with d == c
    EXPECT_TRUE(*one.getTriangles().front()->normals[2] == nd);

    Shape textured;
    TriangleTextured::addShapeQuad(&textured, a, b, c, d, &m, false, &na, &nb, &nc, &nd, &na, &nb, &nc, &nd);
    ASSERT_EQ(textured.getTriangleCount(), 2u);
    EXPECT_TRUE(samePoints(*textured.getTriangles().back(), a, c, d));
}

TEST(ShapeTest, BoundsAndLowestPoint)
{
    Shape s;
    Vector4D lo(7, 7, 7, 7), hi = lo, low = lo;
    EXPECT_FALSE(s.getLimits(lo, hi));
    EXPECT_FALSE(s.getMinPointY(low));
    EXPECT_EQ(lo.x, 7.0f);
    s.addTriangle(new Triangle(Vector4D(0, 5, 0, 2), Vector4D(1, 6, -2, 2), Vector4D(3, 5, 1, 2)));
    ASSERT_TRUE(s.getLimits(lo, hi));
    EXPECT_TRUE(lo.x == 0 && lo.y == 5 && lo.z == -2 && lo.w == 1);
    EXPECT_TRUE(hi.x == 3 && hi.y == 6 && hi.z == 1 && hi.w == 1);
    s.addTriangle(new Triangle(pt(10, -1, 10), pt(11, 0, 10), pt(10, 0, 12)));
    s.addTriangle(new Triangle(pt(-5, -1, 0), pt(11, 0, 10), pt(10, 0, 12)));
    ASSERT_TRUE(s.getMinPointY(low));
    EXPECT_TRUE(low == pt(10, -1, 10));  // the first of the two lowest wins
}

// The nearest facing triangle by the same rule, computed independently.
const Triangle* nearestFacing(const Shape& s, const Vector4D& o, const Vector4D& d)
{
    const Triangle* best = nullptr;
    float bestDistance = 0;
    for (const Triangle* t : s.getTriangles()) {
        const Vector4D a = *t->points[0], b = *t->points[1], c = *t->points[2];
        const Vector4D n = (b - a).pvect3D(c - a);
        const float denom = n.scal3D(d);
        if (denom == 0.0f) {
            continue;
        }
        const Vector4D p = o + d * (n.scal3D(a - o) / denom);
        const float area = n.scal3D(n);
        const float u = n.scal3D((c - b).pvect3D(p - b)) / area;
        const float v = n.scal3D((a - c).pvect3D(p - c)) / area;
        if (u < 0 || v < 0 || u + v > 1) {
            continue;
        }
        Vector4D centre = (a + b + c) * (1.0f / 3.0f);
        centre.w = 1.0f;
        const Vector4D w = centre - o;
        if (w.scal3D(d) < 0 || denom > 0) {
            continue;
        }
        const float dist = w.norm3D();
        if (best == nullptr || dist < bestDistance) {
            best = t;
            bestDistance = dist;
        }
    }
    return best;
}

TEST(ShapeTest, NearestFacingTriangleMatchesABruteForcePick)
{
    Sphere sphere(pt(0, 0, 0), 5.0f);
    sphere.setDivision(24);
    std::unique_ptr<Shape> s(sphere.createShape());
    std::srand(3);
    auto r = [] { return static_cast<float>(static_cast<double>(std::rand()) / RAND_MAX) * 2.0f - 1.0f; };
    int hits = 0;
    for (int i = 0; i < 300; ++i) {
        const Vector4D o = pt(r() * 20, r() * 20, r() * 20);
        Vector4D target = pt(r() * 3, r() * 3, r() * 3);
        Vector4D d = target - o;
        d.w = 0.0f;
        Triangle picked;
        const bool found = s->getIntersectingLine(o, d, picked);
        const Triangle* expected = nearestFacing(*s, o, d);
        ASSERT_EQ(found, expected != nullptr) << i;
        if (found) {
            EXPECT_TRUE(picked == *expected) << i;
            EXPECT_TRUE(picked.isOwned());
            ++hits;
        }
        if (found) {
            EXPECT_TRUE(s->isIntersectingBoundariesLine(o, d));
        }
    }
    EXPECT_GT(hits, 250);  // aimed at the centre from outside: almost always a hit

    // From the centre every direction meets the inside of the faces: none face it.
    Triangle untouched(pt(1, 2, 3), pt(4, 5, 6), pt(7, 8, 0));
    EXPECT_FALSE(s->getIntersectingLine(pt(0, 0, 0), Vector4D(0.3f, 0.2f, 1, 0), untouched));
    EXPECT_TRUE(*untouched.points[0] == pt(1, 2, 3));
}

TEST(ShapeTest, EqualityIgnoresOrderButCountsListEntries)
{
    Shape a, b;
    a.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    a.addTriangle(new Triangle(pt(5, 0, 0), pt(6, 0, 0), pt(5, 1, 0)));
    b.addTriangle(new Triangle(pt(6, 0, 0), pt(5, 1, 0), pt(5, 0, 0)));
    b.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(Shape() == Shape());
    b.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    EXPECT_FALSE(a == b);

    // One pointer listed twice is matched once and then gone entirely.
    Shape twice;
    auto* t = new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0));
    twice.addTriangle(t);
    twice.addTriangle(t);
    Shape distinct;
    distinct.addTriangle(new Triangle(*t));
    distinct.addTriangle(new Triangle(*t));
    EXPECT_FALSE(twice == distinct);
    EXPECT_TRUE(twice.removeTriangle(t));
    EXPECT_EQ(twice.getTriangleCount(), 1u);
    EXPECT_TRUE(twice.removeTriangle(t));
    EXPECT_FALSE(twice.removeTriangle(t));
    delete t;
}

TEST(ShapeTest, CopiesTransformsDrainAndSerialisation)
{
    const Material red("red"), blue("blue");
    Shape s;
    s.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0), &red, nullptr, nullptr, nullptr));
    const Vector4D uv(0.5f, 0.5f, 0, 0);
    s.addTriangle(new TriangleTextured(pt(0, 0, 1), pt(1, 0, 1), pt(0, 1, 1), &blue, nullptr, nullptr, nullptr, &uv,
                                       &uv, &uv));
    s.addTriangle(new Triangle(pt(0, 0, 2), pt(1, 0, 2), pt(0, 1, 2), &red, nullptr, nullptr, nullptr));
    EXPECT_TRUE(s.hasTriangle(Triangle(pt(0, 1, 1), pt(0, 0, 1), pt(1, 0, 1))));

    Shape copy(s);
    EXPECT_TRUE(copy == s);
    EXPECT_NE(copy.getTriangles().front(), s.getTriangles().front());
    const auto* texturedCopy = dynamic_cast<const TriangleTextured*>(*std::next(copy.getTriangles().begin()));
    ASSERT_NE(texturedCopy, nullptr);
    EXPECT_TRUE(*texturedCopy->mapCoords[0] == uv);

    copy.enlarge(2.0f);
    EXPECT_TRUE(*copy.getTriangles().front()->points[1] == pt(2, 0, 0));
    Matrix4D move = Matrix4D::getI4();
    move.setPosition(0.0f, 0.0f, 10.0f);
    copy.transform(move);
    EXPECT_TRUE(*copy.getTriangles().back()->points[0] == pt(0, 0, 14));

    Shape assigned;
    assigned = s;
    EXPECT_TRUE(assigned == s);

    Shape reds;
    reds.drainShapeOfMaterial(&s, &red);
    reds.drainShapeOfMaterial(nullptr, &red);
    EXPECT_EQ(reds.getTriangleCount(), 2u);
    EXPECT_EQ(s.getTriangleCount(), 1u);
    EXPECT_EQ(reds.getTriangles().back()->points[0]->z, 2.0f);  // source order kept

    // Drained from an indexed shape, the triangles take their own points.
    ShapeIndexed indexed;
    indexed.copyTriangles(assigned.getTriangles());
    Shape fromIndexed;
    fromIndexed.drainShapeOfMaterial(&indexed, &red);
    EXPECT_EQ(fromIndexed.getTriangleCount(), 2u);
    EXPECT_EQ(indexed.getPointCount(), 3u);
    for (const Triangle* t : fromIndexed.getTriangles()) {
        EXPECT_TRUE(t->isOwned());
    }

    std::stringstream text;
    ASSERT_TRUE(assigned.save(text));
    EXPECT_EQ(text.str().rfind("Shape\n3\nTriangle\n", 0), 0u);
    Shape loaded;
    ASSERT_TRUE(loaded.load(text));
    EXPECT_TRUE(loaded == assigned);
    EXPECT_TRUE(loaded.isSerializable());

    std::istringstream none("Shape\n0\n");
    EXPECT_TRUE(loaded.load(none));
    EXPECT_EQ(loaded.getTriangleCount(), 3u);  // nothing read, nothing lost
    std::istringstream truncated("Shape\n2\nTriangle\n00 1\n");
    CaptureStdout out;
    Shape partial;
    EXPECT_FALSE(partial.load(truncated));
    EXPECT_EQ(partial.getTriangleCount(), 0u);
    EXPECT_NE(out.text().find("[Error]"), std::string::npos);
}

TEST(ShapeTest, GeneratedCubeIsClosedOutwardAndOfUnitVolume)
{
    for (int division : {1, 3}) {
        Shape cube;
        ASSERT_TRUE(Shape::generateCube(&cube, division));
        EXPECT_EQ(cube.getTriangleCount(), static_cast<std::size_t>(12 * division * division));
        double volume = 0.0;
        for (const Triangle* t : cube.getTriangles()) {
            const Vector4D n = t->getNormal();
            Vector4D c = t->getIsoBaryCenter();
            c.w = 0.0f;
            EXPECT_GT(n.scal3D(c), 0.0f);
            ASSERT_TRUE(t->hasNormals());
            EXPECT_GT(t->normals[0]->scal3D(n), 0.0f);
            // Divergence theorem: the volume is the sum of signed tetrahedra.
            volume += t->points[0]->scal3D(t->points[1]->pvect3D(*t->points[2])) / 6.0;
        }
        EXPECT_NEAR(volume, 1.0, 1e-5);
        Vector4D lo, hi;
        ASSERT_TRUE(cube.getLimits(lo, hi));
        EXPECT_TRUE(lo == pt(-0.5f, -0.5f, -0.5f) && hi == pt(0.5f, 0.5f, 0.5f));
    }
    CaptureStdout out;
    EXPECT_FALSE(Shape::generateCube(nullptr));
    Shape empty;
    EXPECT_FALSE(Shape::generateCube(&empty, 0));
    EXPECT_EQ(empty.getTriangleCount(), 0u);
}

}  // namespace
