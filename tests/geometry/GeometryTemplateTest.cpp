#include "geometry/Circle.h"
#include "geometry/Cylinder.h"
#include "geometry/Material.h"
#include "geometry/Shape.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"

#include "GeometryTesting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using korvel::Circle;
using korvel::Cylinder;
using korvel::GeometryTemplate;
using korvel::Material;
using korvel::Shape;
using korvel::ShapeIndexed;
using korvel::Sphere;
using korvel::Triangle;

namespace {

// Every face looks away from the centre it is built around or, given an
// axis, away from the axis (the wall) or along it (the caps); with a
// negative sign, every face looks the other way.
void expectOutward(const Shape& s, const Vector4D& inside, const Vector4D& axis = Vector4D(), float sign = 1.0f)
{
    for (const Triangle* t : s.getTriangles()) {
        Vector4D c = t->getIsoBaryCenter();
        c.w = 1.0f;
        Vector4D out = c - inside;
        const Vector4D n = t->getNormal();
        if (axis.norm3D() > 0) {
            const float along = out.scal3D(axis);
            out = std::fabs(n.scal3D(axis)) > 0.99f * n.norm3D() ? axis * along : out - axis * along;
        }
        EXPECT_GT(sign * n.scal3D(out), 0.0f);
    }
}

TEST(GeometryTemplateTest, SphereBandsPolesAndWinding)
{
    Sphere sphere(pt(1, 2, 3), 2.0f);
    sphere.setDivision(20);
    std::unique_ptr<Shape> s(sphere.createShape());
    // 10 bands of 20 quads; the 40 quads at the poles are single triangles.
    EXPECT_EQ(s->getTriangleCount(), 10u * 20u * 2u - 40u);
    for (const Triangle* t : s->getTriangles()) {
        for (const Vector4D* p : t->points) {
            EXPECT_NEAR((*p - pt(1, 2, 3)).norm3D(), 2.0f, 1e-5f);
        }
    }
    expectOutward(*s, pt(1, 2, 3));
    // Indexed, a closed sphere shares its poles: 9 rings of 20 and 2 poles.
    ShapeIndexed indexed;
    sphere.includeShape(&indexed, nullptr);
    EXPECT_EQ(indexed.getPointCount(), 9u * 20u + 2u);

    sphere.setReversed(false);
    expectOutward(*std::unique_ptr<Shape>(sphere.createShape()), pt(1, 2, 3), Vector4D(), -1.0f);

    // An odd division stops a band short of the -z pole.
    sphere.setDivision(5);
    std::unique_ptr<Shape> odd(sphere.createShape());
    EXPECT_EQ(odd->getTriangleCount(), 2u * 5u * 2u - 5u);
    Vector4D lo, hi;
    ASSERT_TRUE(odd->getLimits(lo, hi));
    EXPECT_GT(lo.z, 1.1f);  // the pole would be at z = 1
}

TEST(GeometryTemplateTest, TooFewDivisionsEmitNothing)
{
    Sphere sphere(pt(0, 0, 0), 1.0f);
    sphere.setDivision(1);
    Circle disc(pt(0, 0, 0), 1.0f);
    disc.setDivision(0);
    Cylinder cylinder(pt(0, 0, 0), 1.0f, 1.0f);
    cylinder.setDivision(0);
    const GeometryTemplate bare;
    const GeometryTemplate* templates[] = {&sphere, &disc, &cylinder, &bare};
    for (const GeometryTemplate* g : templates) {
        EXPECT_EQ(std::unique_ptr<Shape>(g->createShape())->getTriangleCount(), 0u) << g->getInstanceClassName();
    }
}

// The discs are circles: the bottom one not reversed, facing down; the top
// one reversed, facing up.
TEST(GeometryTemplateTest, UprightCylinderIsClosedOutwardAndCarriesTheMaterial)
{
    Cylinder c(pt(1, 1, 0), 4.0f, 0.5f);
    c.setDivision(12);
    const Material m("glow");
    Shape s;
    c.includeShape(&s, &m);
    EXPECT_EQ(s.getTriangleCount(), 12u * 4u);  // two discs, two triangles per wall quad
    expectOutward(s, pt(1, 1, 2), Vector4D(0, 0, 1, 0));
    for (const Triangle* t : s.getTriangles()) {
        EXPECT_EQ(t->getMaterial(), &m);
    }
    Shape wall;
    c.includeBody(&wall, nullptr);
    EXPECT_EQ(wall.getTriangleCount(), 24u);
}

TEST(GeometryTemplateTest, TwoPointCylinderRunsFromOnePointToTheOther)
{
    const Vector4D from = pt(1, -2, 3), to = pt(4, 2, 3);  // length 5, slanted
    Cylinder slanted(from, to, 1.0f, 0.5f, false);
    slanted.setDivision(16);
    std::unique_ptr<Shape> s(slanted.createShape());
    EXPECT_EQ(s->getTriangleCount(), 16u + 32u);  // bottom disc and wall only
    Vector4D axis = to - from;
    axis.w = 0.0f;
    axis.normalize3D();
    for (const Triangle* t : s->getTriangles()) {
        for (const Vector4D* p : t->points) {
            Vector4D rel = *p - from;
            rel.w = 0.0f;
            const float along = rel.scal3D(axis);
            const float radial = (rel - axis * along).norm3D();
            EXPECT_GE(along, -1e-4f);
            EXPECT_LE(along, 5.0f + 1e-4f);
            // The radius narrows linearly from 1 to 0.5; disc centres are on the axis.
            if (radial > 1e-4f) {
                EXPECT_NEAR(radial, 1.0f - 0.1f * along, 1e-4f);
            }
        }
    }
    expectOutward(*s, from + (to - from) * 0.5f, axis);

    // Closed, the top disc (emitted after the bottom one) is centred on the end point.
    std::unique_ptr<Shape> capped(Cylinder(from, to, 1.0f).createShape());  // division 5
    EXPECT_TRUE(*(*std::next(capped->getTriangles().begin(), 5))->points[0] == to);
}

}  // namespace
