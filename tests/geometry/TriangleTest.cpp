#include "geometry/Material.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/Triangle.h"
#include "geometry/TriangleTextured.h"
#include "support/CaptureStdout.h"

#include "GeometryTesting.h"

#include "core/Matrix4D.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

using korvel::Material;
using korvel::Triangle;
using korvel::TriangleTextured;

namespace {

// Exact, unlike Vector4D's relative equality.
bool same(const Vector4D& a, const Vector4D& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
}

// Turns t into a triangle linking the three points, as an indexed shape does.
void link(Triangle& t, Vector4D* points)
{
    t.releasePoints();
    t.setOwned(false);
    for (int i = 0; i < 3; ++i) {
        t.points[i] = &points[i];
    }
}

TEST(TriangleTest, ConstructionOwnershipAndCopies)
{
    const Material m("steel");
    const Vector4D n(0, 0, 1, 0);
    Triangle full(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0), &m, &n, nullptr, &n);
    full.setFlag(true);
    Triangle copy(full);
    EXPECT_TRUE(copy.isOwned() && copy.getFlag() && copy.getMaterial() == &m);
    EXPECT_NE(full.normals[0], &n);
    EXPECT_TRUE(copy.points[0] != full.points[0] && same(*copy.points[0], *full.points[0]));
    EXPECT_EQ(copy.normals[1], nullptr);
    EXPECT_TRUE(copy.normals[2] != nullptr && copy.normals[2] != full.normals[2] && same(*copy.normals[2], n));

    CaptureStdout out;
    auto* adopted = new Triangle(new Vector4D(pt(0, 0, 0)), new Vector4D(pt(1, 0, 0)), new Vector4D(pt(0, 1, 0)), &m);
    EXPECT_EQ(out.text(), "[Warning] use of dangerous constructor !\n");
    EXPECT_TRUE(adopted->isOwned());
    delete adopted;  // frees the adopted points (the sanitizer build checks it)
}

TEST(TriangleTest, LinkedTrianglesReplaceLinksAndBecomeOwnedByAssignment)
{
    Vector4D shared[3] = {pt(5, 5, 5), pt(6, 5, 5), pt(5, 6, 5)};
    Vector4D other = pt(4, 4, 4);
    auto* linked = new Triangle();
    link(*linked, shared);
    CaptureStdout out;
    EXPECT_TRUE(linked->replaceLinked(&shared[2], &other));
    EXPECT_EQ(linked->points[2], &other);
    EXPECT_FALSE(linked->replaceLinked(&shared[2], &other));
    EXPECT_EQ(out.text(), "[warning] attempt to replace no existing linked point in Triangle\n");

    // Assigned, the values go into the linked points themselves.
    out.clear();
    const Vector4D n(0, 0, 1, 0);
    const Triangle source(pt(0, 0, 0), pt(2, 0, 0), pt(0, 2, 0), nullptr, &n, &n, nullptr);
    *linked = source;
    EXPECT_EQ(out.text(), "[ERROR] assignment to not owned triangle\n");
    EXPECT_TRUE(linked->isOwned() && linked->points[1] == &shared[1] && linked->points[2] == &other);
    EXPECT_TRUE(same(shared[0], pt(0, 0, 0)) && same(shared[1], pt(2, 0, 0)) && same(other, pt(0, 2, 0)));
    EXPECT_TRUE(linked->normals[1] != nullptr && same(*linked->normals[1], n) && linked->normals[2] == nullptr);
    linked->initializePoints();  // they are not its own to free, whatever it now says
    delete linked;

    // In an indexed shape, the triangles sharing those points move along.
    korvel::ShapeIndexed fan;
    fan.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    fan.addTriangle(new Triangle(pt(1, 0, 0), pt(1, 1, 0), pt(0, 1, 0)));
    Triangle* first = fan.getTriangles().front();
    Triangle* second = fan.getTriangles().back();
    *first = Triangle(pt(0, 0, 0), pt(3, 0, 0), pt(0, 3, 0));
    EXPECT_TRUE(same(*second->points[0], pt(3, 0, 0)) && same(*second->points[2], pt(0, 3, 0)));
    EXPECT_EQ(second->points[0], first->points[1]);
    first->setOwned(false);  // handed back to the shape, which frees the shared points

    // An owned target keeps its objects and drops the normals the source
    // lacks; it cannot take links.
    Triangle target(pt(1, 1, 1), pt(2, 2, 2), pt(3, 3, 3), nullptr, &n, &n, &n);
    Vector4D* before = target.points[0];
    out.clear();
    target = Triangle(pt(7, 0, 0), pt(8, 0, 0), pt(9, 0, 0));
    EXPECT_EQ(out.text(), "");
    EXPECT_TRUE(target.points[0] == before && same(*before, pt(7, 0, 0)));
    EXPECT_FALSE(target.hasNormals());
    EXPECT_FALSE(target.replaceLinked(target.points[0], &other));
    EXPECT_EQ(out.text(), "[warning] attempt to replace owned points by links in Triangle\n");
}

TEST(TriangleTest, QueriesAndTransformOnPointsAndNormals)
{
    Triangle t(pt(0, 0, 0), pt(3, 0, 0), pt(0, 3, 0));
    EXPECT_TRUE(same(t.getIsoBaryCenter(), Vector4D(1, 1, 0, 4.0f / 3.0f)));
    EXPECT_TRUE(same(t.getNormal(), Vector4D(0, 0, 9, 0)));
    EXPECT_TRUE(t == Triangle(pt(0, 3, 0), pt(0, 0, 0), pt(3, 0, 0)));
    EXPECT_FALSE(t == Triangle(pt(0, 3, 0), pt(0, 0, 0), pt(3, 0.1f, 0)));

    EXPECT_TRUE(t.setNormal(pt(3, 0, 0), Vector4D(0, 0, 1, 0)));
    EXPECT_EQ(t.getNormal(pt(3, 0, 0)), t.normals[1]);
    EXPECT_FALSE(t.setNormal(pt(9, 9, 9), Vector4D(0, 0, 1, 0)));
    EXPECT_FALSE(t.hasNormals());  // only the first vertex's normal counts

    // Nearest other corner, skipping corners equal to the point; none when
    // all three are.
    Triangle sliver(pt(0, 0, 0), pt(5, 0, 0), pt(0, 2, 0));
    EXPECT_EQ(sliver.getNearestExcluded(sliver.points[0]), sliver.points[2]);
    const Vector4D outside = pt(5, 0, 0);
    EXPECT_EQ(sliver.getNearestExcluded(&outside), sliver.points[0]);
    Triangle flat(pt(1, 1, 1), pt(1, 1, 1), pt(1, 1, 1));
    EXPECT_EQ(flat.getNearestExcluded(flat.points[0]), nullptr);

    // Points turn and move; normals only turn, and are renormalised.
    Matrix4D m = Matrix4D::getI4();
    m.rotZ(static_cast<float>(M_PI / 2));
    m.setPosition(10.0f, 0.0f, 0.0f);
    t.setNormal(pt(0, 0, 0), Vector4D(2, 0, 0, 0));
    t.transform(m);
    EXPECT_NEAR(t.points[1]->x, 10.0f, 1e-5f);
    EXPECT_NEAR(t.points[1]->y, 3.0f, 1e-5f);
    EXPECT_NEAR(t.normals[0]->y, 1.0f, 1e-6f);
}

TEST(TriangleTest, LineTestAgreesWithBarycentricReferenceWhateverTheDirectionSign)
{
    std::srand(11);
    auto anywhere = [] { return pt(uniform(-2, 2), uniform(-2, 2), uniform(-2, 2)); };
    int agreed = 0;
    for (int i = 0; i < 2000; ++i) {
        const Triangle t(anywhere(), anywhere(), anywhere());
        const Vector4D o = anywhere(), d = anywhere() - pt(0, 0, 0);
        const float margin = barycentricMargin(*t.points[0], *t.points[1], *t.points[2], o, d);
        // Lines grazing an edge may go either way in float; skip those.
        if (std::fabs(margin) > 1e-3f) {
            ASSERT_EQ(t.isIntersectingLine(o, d), margin > 0) << "case " << i;
            ASSERT_EQ(t.isIntersectingLine(o, d * -1.0f), margin > 0) << "case " << i;
            ++agreed;
        }
    }
    EXPECT_GT(agreed, 1900);
}

TEST(TriangleTest, SaveLoadKeepsFlagsPointsAndNormalsButNotMapCoordinates)
{
    const Vector4D n(0, 0.5f, -1, 0);
    Triangle t(pt(1.5f, -2, 3), pt(10, 0, 0), pt(0, 1e-3f, 7), nullptr, nullptr, &n, nullptr);
    t.setFlag(true);
    std::stringstream text;
    ASSERT_TRUE(t.save(text));
    Triangle back;
    ASSERT_TRUE(back.load(text));
    EXPECT_TRUE(back.getFlag() && back.isOwned());
    EXPECT_TRUE(same(*back.points[0], *t.points[0]) && same(*back.points[2], *t.points[2]));
    EXPECT_TRUE(back.normals[0] == nullptr && back.normals[2] == nullptr);
    ASSERT_NE(back.normals[1], nullptr);
    EXPECT_TRUE(same(*back.normals[1], n));

    // Texture coordinates follow copies and assignment, not serialisation.
    const Vector4D ta(0, 0, 0, 0), tb(1, 0, 0, 0), tc(0, 1, 0, 0);
    TriangleTextured textured(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0), nullptr, nullptr, nullptr, nullptr, &ta, &tb,
                              nullptr);
    TriangleTextured copy(textured);
    EXPECT_TRUE(copy.mapCoords[1] != nullptr && copy.mapCoords[1] != textured.mapCoords[1]
                && same(*copy.mapCoords[1], tb));
    TriangleTextured other(pt(0, 0, 0), pt(2, 0, 0), pt(0, 2, 0), nullptr, nullptr, nullptr, nullptr, &tc, &tc, &tc);
    other = textured;
    EXPECT_EQ(other.mapCoords[2], nullptr);
    EXPECT_TRUE(same(*other.mapCoords[0], ta));
    std::stringstream texturedText;
    textured.save(texturedText);
    Triangle plain;
    ASSERT_TRUE(plain.load(texturedText));
    EXPECT_TRUE(plain == textured);
}

}  // namespace
