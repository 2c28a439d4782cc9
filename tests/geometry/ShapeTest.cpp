#include "geometry/Material.h"
#include "geometry/Shape.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"
#include "geometry/TriangleTextured.h"
#include "support/CaptureStdout.h"

#include "GeometryTesting.h"

#include <gtest/gtest.h>

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

Triangle* unit(float z = 0.0f, const Material* m = nullptr)
{
    return new Triangle(pt(0, 0, z), pt(1, 0, z), pt(0, 1, z), m, nullptr, nullptr, nullptr);
}

TEST(ShapeTest, QuadInsertionFollowsTheDegenerateRules)
{
    const Vector4D a = pt(0, 0, 0), b = pt(1, 0, 0), c = pt(1, 1, 0), d = pt(0, 1, 0);
    // Each corner slot has its own normal, so the normals show which slots
    // each triangle was built from.
    const Vector4D normals[4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {1, 1, 0, 0}};
    struct Case {
        const char* name;
        Vector4D corners[4];
        std::vector<std::vector<int>> triangles;  // corner slots of each triangle added
    };
    const Case cases[] = {
        {"proper", {a, b, c, d}, {{0, 1, 2}, {2, 3, 0}}}, {"a == b", {a, a, c, d}, {{0, 2, 3}}},
        {"b == c", {a, b, b, d}, {{0, 2, 3}}},            {"c == d", {a, b, c, c}, {{0, 1, 3}}},
        {"d == a", {a, b, c, a}, {{0, 1, 2}}},
    };
    const Material m("m");
    for (const Case& k : cases) {
        const Vector4D* q = k.corners;
        Shape s;
        s.addQuad(q[0], q[1], q[2], q[3], &m, false, &normals[0], &normals[1], &normals[2], &normals[3]);
        ASSERT_EQ(s.getTriangleCount(), k.triangles.size()) << k.name;
        auto t = s.getTriangles().begin();
        for (const auto& slots : k.triangles) {
            EXPECT_EQ((*t)->getMaterial(), &m);
            for (int i = 0; i < 3; ++i) {
                EXPECT_TRUE(*(*t)->points[i] == q[slots[i]] && *(*t)->normals[i] == normals[slots[i]]) << k.name;
            }
            ++t;
        }
    }
    Shape textured;  // split (a, b, c), (a, c, d), with no degenerate rule
    TriangleTextured::addShapeQuad(&textured, a, a, c, d, &m, false, &normals[0], &normals[1], &normals[2],
                                   &normals[3], &a, &b, &c, &d);
    ASSERT_EQ(textured.getTriangleCount(), 2u);
    EXPECT_TRUE(*textured.getTriangles().back()->points[1] == c && *textured.getTriangles().back()->points[2] == d);
}

// Picking among many shapes is compared with a search of every triangle in
// the world tests; here, what lies behind or looks away is never picked.
TEST(ShapeTest, LineTestKeepsTheNearestFaceAheadThatLooksAtTheLine)
{
    Sphere sphere(pt(0, 0, 0), 5.0f);
    sphere.setDivision(24);
    std::unique_ptr<Shape> s(sphere.createShape());
    const Vector4D from = pt(0.3f, 0.2f, 20), down(0, 0, -1, 0);
    Triangle picked;
    ASSERT_TRUE(s->getIntersectingLine(from, down, picked));
    EXPECT_TRUE(picked.isOwned());
    EXPECT_GT(picked.points[0]->z, 4.0f);  // the near side
    EXPECT_TRUE(s->isIntersectingBoundariesLine(from, down));
    EXPECT_FALSE(s->isIntersectingBoundariesLine(pt(9, 9, 20), down));

    // Of two faces in line, the nearer, whichever came first.
    Shape panes;
    panes.addTriangle(new Triangle(pt(0, 0, -5), pt(1, 0, -5), pt(0, 1, -5)));
    panes.addTriangle(new Triangle(pt(0, 0, -2), pt(1, 0, -2), pt(0, 1, -2)));
    ASSERT_TRUE(panes.getIntersectingLine(pt(0.2f, 0.2f, 0), down, picked));
    EXPECT_FLOAT_EQ(picked.points[0]->z, -2.0f);

    // From the centre no face looks at the line, and the out triangle stays
    // the placeholder it was.
    Triangle untouched;
    EXPECT_FALSE(s->getIntersectingLine(pt(0, 0, 0), Vector4D(0.3f, 0.2f, 1, 0), untouched) || untouched.isTriangle());
}

TEST(ShapeTest, EqualityIgnoresOrderButCountsListEntries)
{
    Shape a, b, twice, distinct;
    a.addTriangle(unit());
    a.addTriangle(new Triangle(pt(5, 0, 0), pt(6, 0, 0), pt(5, 1, 0)));
    b.addTriangle(new Triangle(pt(6, 0, 0), pt(5, 1, 0), pt(5, 0, 0)));
    b.addTriangle(unit());
    EXPECT_TRUE(a == b && Shape() == Shape());
    b.addTriangle(unit());
    EXPECT_FALSE(a == b);

    // One pointer listed twice is matched once and then gone entirely.
    Triangle* t = unit();
    twice.addTriangle(t);
    twice.addTriangle(t);
    distinct.addTriangle(unit());
    distinct.addTriangle(unit());
    EXPECT_FALSE(twice == distinct);
    EXPECT_TRUE(twice.removeTriangle(t) && twice.removeTriangle(t));
    EXPECT_FALSE(twice.removeTriangle(t));
    delete t;
}

TEST(ShapeTest, CopiesEnlargeDrainAndSerialisation)
{
    const Material red("red"), blue("blue");
    const Vector4D uv(0.5f, 0.5f, 0, 0);
    Shape s;
    s.addTriangle(unit(0, &red));
    s.addTriangle(new TriangleTextured(pt(0, 0, 1), pt(1, 0, 1), pt(0, 1, 1), &blue, nullptr, nullptr, nullptr, &uv,
                                       &uv, &uv));
    s.addTriangle(unit(2, &red));
    Shape copy(s), assigned;
    assigned = s;
    EXPECT_TRUE(copy == s && assigned == s);
    // The copy is made of plain triangles: map coordinates stay with the
    // textured triangle's own copies.
    for (const Triangle* t : copy.getTriangles()) {
        EXPECT_STREQ(t->getInstanceClassName(), "Triangle");
        EXPECT_TRUE(t->isOwned());
    }
    copy.enlarge(2.0f);  // by the matrix: w stays 1, unlike Triangle::enlarge
    EXPECT_TRUE(*copy.getTriangles().back()->points[1] == pt(2, 0, 4));

    // Drained in source order; from an indexed shape the triangles take
    // their own points.
    Shape reds, fromIndexed;
    reds.drainShapeOfMaterial(&s, &red);
    reds.drainShapeOfMaterial(nullptr, &red);
    ASSERT_EQ(reds.getTriangleCount(), 2u);
    EXPECT_TRUE(s.getTriangleCount() == 1u && reds.getTriangles().back()->points[0]->z == 2.0f);
    ShapeIndexed indexed;
    indexed.copyTriangles(assigned.getTriangles());
    fromIndexed.drainShapeOfMaterial(&indexed, &red);
    EXPECT_EQ(indexed.getPointCount(), 3u);
    ASSERT_EQ(fromIndexed.getTriangleCount(), 2u);
    EXPECT_TRUE(fromIndexed.getTriangles().front()->isOwned() && fromIndexed.getTriangles().back()->isOwned());

    std::stringstream text;
    ASSERT_TRUE(assigned.save(text));
    Shape loaded;
    ASSERT_TRUE(loaded.load(text));
    EXPECT_TRUE(loaded == assigned);
    std::istringstream truncated("Shape\n2\nTriangle\n00 1\n");
    CaptureStdout out;
    EXPECT_FALSE(Shape().load(truncated));
    EXPECT_NE(out.text().find("[Error]"), std::string::npos);
}

TEST(ShapeTest, GeneratedCubeIsClosedOutwardAndOfUnitVolume)
{
    for (int division : {1, 3}) {
        Shape cube;
        ASSERT_TRUE(Shape::generateCube(&cube, division));
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
    }
    CaptureStdout quiet;
    EXPECT_FALSE(Shape::generateCube(nullptr));
}

}  // namespace
