#include "geometry/Material.h"
#include "geometry/Triangle.h"
#include "geometry/TriangleTextured.h"
#include "support/CaptureStdout.h"

#include "core/Matrix4D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <sstream>

using korvel::Material;
using korvel::Triangle;
using korvel::TriangleTextured;

namespace {

Vector4D pt(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

bool same(const Vector4D& a, const Vector4D& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
}

TEST(TriangleTest, ConstructionOwnershipAndCopies)
{
    Triangle placeholder;
    EXPECT_TRUE(placeholder.isOwned());
    EXPECT_FALSE(placeholder.getFlag());
    EXPECT_FALSE(placeholder.hasNormals());
    EXPECT_TRUE(same(*placeholder.points[1], pt(1, 0, 1)));
    EXPECT_FALSE(placeholder.isTriangle());  // first and last corners coincide

    const Material m("steel");
    const Vector4D n(0, 0, 1, 0);
    Triangle full(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0), &m, &n, nullptr, &n);
    EXPECT_EQ(full.getMaterial(), &m);
    EXPECT_TRUE(full.hasNormals());
    EXPECT_EQ(full.normals[1], nullptr);
    EXPECT_NE(full.normals[0], &n);

    full.setFlag(true);
    Triangle copy(full);
    EXPECT_TRUE(copy.isOwned() && copy.getFlag() && copy.getMaterial() == &m);
    EXPECT_NE(copy.points[0], full.points[0]);
    EXPECT_TRUE(same(*copy.points[0], *full.points[0]));
    EXPECT_EQ(copy.normals[1], nullptr);
    EXPECT_NE(copy.normals[2], full.normals[2]);

    CaptureStdout out;
    auto* adopted = new Triangle(new Vector4D(pt(0, 0, 0)), new Vector4D(pt(1, 0, 0)), new Vector4D(pt(0, 1, 0)), &m);
    EXPECT_EQ(out.text(), "[Warning] use of dangerous constructor !\n");
    EXPECT_TRUE(adopted->isOwned());
    delete adopted;  // frees the adopted points (the sanitizer build checks it)
}

TEST(TriangleTest, AssignmentMakesTheTargetOwnedWithoutTouchingLinkedPoints)
{
    Vector4D shared[3] = {pt(5, 5, 5), pt(6, 5, 5), pt(5, 6, 5)};
    auto* linked = new Triangle(pt(0, 0, 0), pt(0, 0, 0), pt(0, 0, 0));
    linked->releasePoints();
    linked->setOwned(false);
    for (int i = 0; i < 3; ++i) {
        linked->points[i] = &shared[i];
    }
    const Vector4D n(0, 0, 1, 0);
    Triangle source(pt(0, 0, 0), pt(2, 0, 0), pt(0, 2, 0), nullptr, &n, &n, nullptr);
    CaptureStdout out;
    *linked = source;
    EXPECT_EQ(out.text(), "[ERROR] assignment to not owned triangle\n");
    EXPECT_TRUE(linked->isOwned());
    EXPECT_TRUE(same(*linked->points[1], pt(2, 0, 0)));
    EXPECT_TRUE(same(shared[1], pt(6, 5, 5)));
    EXPECT_EQ(linked->normals[2], nullptr);
    delete linked;  // owns fresh points now; the shared ones stay alive
    EXPECT_TRUE(same(shared[0], pt(5, 5, 5)));

    // An owned target keeps its objects and drops the normals the source lacks.
    Triangle target(pt(1, 1, 1), pt(2, 2, 2), pt(3, 3, 3), nullptr, &n, &n, &n);
    Vector4D* before = target.points[0];
    out.clear();
    target = Triangle(pt(7, 0, 0), pt(8, 0, 0), pt(9, 0, 0));
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(target.points[0], before);
    EXPECT_TRUE(same(*target.points[0], pt(7, 0, 0)));
    EXPECT_FALSE(target.hasNormals());
}

TEST(TriangleTest, QueriesOnPointsAndNormals)
{
    Triangle t(pt(0, 0, 0), pt(3, 0, 0), pt(0, 3, 0));
    EXPECT_TRUE(t.isTriangle());
    EXPECT_TRUE(same(t.getIsoBaryCenter(), Vector4D(1, 1, 0, 4.0f / 3.0f)));
    EXPECT_TRUE(same(t.getNormal(), Vector4D(0, 0, 9, 0)));
    EXPECT_TRUE(t == Triangle(pt(0, 3, 0), pt(0, 0, 0), pt(3, 0, 0)));
    EXPECT_FALSE(t == Triangle(pt(0, 3, 0), pt(0, 0, 0), pt(3, 0.1f, 0)));
    EXPECT_TRUE(t.hasPoint(pt(3, 0, 0)));
    EXPECT_FALSE(t.hasPoint(pt(3, 0, 1)));

    Vector4D lo, hi;
    t.getLimits(lo, hi);
    EXPECT_TRUE(same(lo, pt(0, 0, 0)));
    EXPECT_TRUE(same(hi, pt(3, 3, 0)));

    EXPECT_EQ(t.getNormal(pt(3, 0, 0)), nullptr);
    EXPECT_TRUE(t.setNormal(pt(3, 0, 0), Vector4D(0, 0, 1, 0)));
    ASSERT_NE(t.getNormal(pt(3, 0, 0)), nullptr);
    EXPECT_EQ(t.getNormal(pt(3, 0, 0)), t.normals[1]);
    EXPECT_FALSE(t.setNormal(pt(9, 9, 9), Vector4D(0, 0, 1, 0)));
    EXPECT_FALSE(t.hasNormals());  // only the first vertex's normal counts

    // Nearest other corner; none when all three equal the point.
    Triangle sliver(pt(0, 0, 0), pt(5, 0, 0), pt(0, 2, 0));
    EXPECT_EQ(sliver.getNearestExcluded(sliver.points[0]), sliver.points[2]);
    const Vector4D outside = pt(5, 0, 0);
    EXPECT_EQ(sliver.getNearestExcluded(&outside), sliver.points[0]);  // the equal corner is skipped
    Triangle flat(pt(1, 1, 1), pt(1, 1, 1), pt(1, 1, 1));
    EXPECT_EQ(flat.getNearestExcluded(flat.points[0]), nullptr);
}

TEST(TriangleTest, TransformEnlargeAndLinkedReplacement)
{
    const Vector4D n(0, 0, 2, 0);
    Triangle t(pt(1, 0, 0), pt(0, 1, 0), pt(0, 0, 1), nullptr, &n, nullptr, nullptr);
    Matrix4D m = Matrix4D::getI4();
    m.rotZ(static_cast<float>(M_PI / 2));
    m.setPosition(10.0f, 0.0f, 0.0f);
    t.transform(m);
    EXPECT_NEAR(t.points[0]->x, 10.0f, 1e-5f);
    EXPECT_NEAR(t.points[0]->y, 1.0f, 1e-5f);
    EXPECT_NEAR(t.normals[0]->z, 1.0f, 1e-6f);  // renormalised, translation ignored (w = 0)

    Triangle e(pt(1, 2, 3), pt(2, 2, 2), pt(0, 0, 5));
    e.enlarge(2.0f);
    EXPECT_TRUE(same(*e.points[0], Vector4D(2, 4, 1, 2)));  // z overwritten, w scaled

    CaptureStdout out;
    Vector4D other = pt(4, 4, 4);
    EXPECT_FALSE(e.replaceLinked(e.points[0], &other));
    EXPECT_EQ(out.text(), "[warning] attempt to replace owned points by links in Triangle\n");
    out.clear();
    Vector4D shared[3] = {pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)};
    Triangle linked(pt(0, 0, 0), pt(0, 0, 0), pt(0, 0, 0));
    linked.releasePoints();
    linked.setOwned(false);
    for (int i = 0; i < 3; ++i) {
        linked.points[i] = &shared[i];
    }
    EXPECT_TRUE(linked.replaceLinked(&shared[1], &other));
    EXPECT_EQ(linked.points[1], &other);
    EXPECT_FALSE(linked.replaceLinked(&shared[1], &other));
    EXPECT_EQ(out.text(), "[warning] attempt to replace no existing linked point in Triangle\n");
}

// The line test against an independent one: the line meets the plane at
// O + sD, and the meeting point lies inside by barycentric coordinates.
bool crossesByBarycentre(const Triangle& t, const Vector4D& o, const Vector4D& d)
{
    const Vector4D a = *t.points[0], b = *t.points[1], c = *t.points[2];
    const Vector4D n = (b - a).pvect3D(c - a);
    const float denom = n.scal3D(d);
    if (std::fabs(denom) < 1e-6f) {
        return false;
    }
    const float s = n.scal3D(a - o) / denom;
    const Vector4D p = o + d * s;
    const float area = n.scal3D(n);
    const float u = n.scal3D((c - b).pvect3D(p - b)) / area;
    const float v = n.scal3D((a - c).pvect3D(p - c)) / area;
    return u >= 0 && v >= 0 && u + v <= 1;
}

TEST(TriangleTest, LineTestAgreesWithBarycentricReferenceAndIgnoresDirectionSign)
{
    Triangle t(pt(0, 0, 0), pt(3, 0, 0), pt(0, 3, 0));
    EXPECT_TRUE(t.isIntersectingLine(pt(1, 1, 5), Vector4D(0, 0, -1, 0)));
    EXPECT_TRUE(t.isIntersectingLine(pt(1, 1, 5), Vector4D(0, 0, 1, 0)));  // either way along the line
    EXPECT_FALSE(t.isIntersectingLine(pt(1, -0.01f, 5), Vector4D(0, 0, -1, 0)));

    std::srand(11);
    auto r = [] { return static_cast<float>(static_cast<double>(std::rand()) / RAND_MAX) * 4.0f - 2.0f; };
    int agreed = 0;
    for (int i = 0; i < 2000; ++i) {
        Triangle u(pt(r(), r(), r()), pt(r(), r(), r()), pt(r(), r(), r()));
        const Vector4D o = pt(r(), r(), r());
        const Vector4D d(r(), r(), r(), 0.0f);
        const bool expected = crossesByBarycentre(u, o, d);
        // Lines grazing an edge may go either way in float; skip those.
        const Vector4D a = *u.points[0], b = *u.points[1], c = *u.points[2];
        const Vector4D n = (b - a).pvect3D(c - a);
        if (std::fabs(n.scal3D(d)) < 1e-3f * n.norm3D() * d.norm3D()) {
            continue;
        }
        bool near = false;
        for (float delta : {-1e-3f, 1e-3f}) {
            for (int axis = 0; axis < 3; ++axis) {
                Vector4D moved = o;
                moved.setValue(o.getValue(axis) + delta, axis);
                near = near || crossesByBarycentre(u, moved, d) != expected;
            }
        }
        if (near) {
            continue;
        }
        ASSERT_EQ(u.isIntersectingLine(o, d), expected) << "case " << i;
        ++agreed;
    }
    EXPECT_GT(agreed, 1500);
}

TEST(TriangleTest, SaveLoadRoundTripKeepsFlagsPointsAndNormals)
{
    const Vector4D n(0, 0.5f, -1, 0);
    Triangle t(pt(1.5f, -2, 3), pt(10, 0, 0), pt(0, 1e-3f, 7), nullptr, nullptr, &n, nullptr);
    t.setFlag(true);
    std::stringstream text;
    ASSERT_TRUE(t.save(text));
    EXPECT_EQ(text.str().rfind("Triangle\n11", 0), 0u);  // flag then owned, no separator
    Triangle back;
    ASSERT_TRUE(back.load(text));
    EXPECT_TRUE(back.getFlag());
    EXPECT_TRUE(back.isOwned());
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(same(*back.points[i], *t.points[i])) << i;
    }
    EXPECT_EQ(back.normals[0], nullptr);
    ASSERT_NE(back.normals[1], nullptr);
    EXPECT_TRUE(same(*back.normals[1], n));
    EXPECT_EQ(back.normals[2], nullptr);

    std::istringstream broken("Triangle\n1");
    CaptureStdout out;
    Triangle fresh;
    EXPECT_FALSE(fresh.load(broken));
    EXPECT_NE(out.text().find("[Error]"), std::string::npos);
}

TEST(TriangleTest, TexturedCoordinatesFollowCopiesButNotSerialisation)
{
    const Vector4D ta(0, 0, 0, 0), tb(1, 0, 0, 0), tc(0, 1, 0, 0);
    TriangleTextured t(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0), nullptr, nullptr, nullptr, nullptr, &ta, &tb, nullptr);
    EXPECT_STREQ(t.getInstanceClassName(), "TriangleTextured");
    ASSERT_NE(t.mapCoords[1], nullptr);
    EXPECT_EQ(t.mapCoords[2], nullptr);
    TriangleTextured copy(t);
    ASSERT_NE(copy.mapCoords[1], nullptr);
    EXPECT_NE(copy.mapCoords[1], t.mapCoords[1]);
    EXPECT_TRUE(same(*copy.mapCoords[1], tb));
    TriangleTextured other(pt(0, 0, 0), pt(2, 0, 0), pt(0, 2, 0), nullptr, nullptr, nullptr, nullptr, &tc, &tc, &tc);
    other = t;
    EXPECT_EQ(other.mapCoords[2], nullptr);
    EXPECT_TRUE(same(*other.mapCoords[0], ta));

    std::stringstream text;
    t.save(text);
    EXPECT_EQ(text.str().rfind("TriangleTextured\n", 0), 0u);
    Triangle plain;
    ASSERT_TRUE(plain.load(text));
    EXPECT_TRUE(plain == t);
}

}  // namespace
