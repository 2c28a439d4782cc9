#include "geometry/Cylinder.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/ShapeNode.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using korvel::Cylinder;
using korvel::Shape;
using korvel::ShapeIndexed;
using korvel::ShapeNode;
using korvel::Sphere;
using korvel::Triangle;

namespace {

Vector4D pt(float x, float y, float z)
{
    return Vector4D(x, y, z, 1.0f);
}

// Empty when the indexed shape is consistent, else the first rule broken:
// triangles link only indexed, live, distinct shared points and are proper;
// each node lists exactly the triangles using its point, once each; the
// octree finds every point by value and holds only live nodes.
std::string inconsistency(const ShapeIndexed& s)
{
    const auto& index = s.getPointsIndex();
    std::map<const Vector4D*, std::multiset<const Triangle*>> users;
    std::set<const Triangle*> listed;
    for (const Triangle* t : s.getTriangles()) {
        if (!listed.insert(t).second) {
            return "triangle listed twice";
        }
        if (t->isOwned()) {
            return "indexed triangle owns its points";
        }
        for (Vector4D* p : t->points) {
            if (index.count(p) == 0) {
                return "triangle point not in the index";
            }
            if (s.isRemoved(p)) {
                return "triangle links a removed point";
            }
            users[p].insert(t);
        }
        if (t->points[0] == t->points[1] || t->points[1] == t->points[2] || t->points[0] == t->points[2]
            || !t->isTriangle()) {
            return "degenerate triangle";
        }
    }
    for (const auto& [p, node] : index) {
        if (node->point != p) {
            return "node point differs from its key";
        }
        if (node->isEmpty()) {
            return "node without triangle";
        }
        const std::multiset<const Triangle*> around(node->triangles.begin(), node->triangles.end());
        if (around != users[p]) {
            return "node triangles differ from the triangles using its point";
        }
        // Two shared points may be equal in value (equality is relative and
        // not transitive); the octree then answers with either of them.
        ShapeNode* found = nullptr;
        if (!s.getOctree().get(*p, found) || index.count(found->point) == 0 || index.at(found->point) != found
            || !(*found->point == *p)) {
            return "octree does not find the point by value";
        }
    }
    std::list<ShapeNode*> values;
    s.getOctree().getList(values);
    std::set<const ShapeNode*> live;
    for (const auto& entry : index) {
        live.insert(entry.second);
    }
    for (const ShapeNode* n : values) {
        if (live.count(n) == 0) {
            return "octree holds a removed node";
        }
    }
    if (values.size() != s.getOctree().size() || values.size() > index.size()) {
        return "octree holds more than the index";
    }
    return "";
}

Shape* sphere(int division, float radius = 1.0f)
{
    Sphere s(pt(0, 0, 0), radius);
    s.setDivision(division);
    return s.createShape();
}

Shape* cylinder(int division, bool closed)
{
    Cylinder c(pt(1, -2, 0.5f), pt(3, 1, 4), 1.5f, 0.75f, closed);
    c.setDivision(division);
    return c.createShape();
}

// n x n quads in the z = 0 plane, with a border: an open surface.
Shape* grid(int n)
{
    auto* s = new Shape();
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            s->addQuad(pt(float(i), float(j), 0), pt(float(i + 1), float(j), 0), pt(float(i + 1), float(j + 1), 0),
                       pt(float(i), float(j + 1), 0));
        }
    }
    return s;
}

// A grid whose corners are written slightly differently by each triangle
// (within the equality tolerance), with some triangles given twice and a
// few degenerate ones that the index must refuse.
Shape* duplicated(int n)
{
    auto* s = new Shape();
    auto jitter = [](float v, int k) { return v == 0.0f ? 0.0f : v * (1.0f + 2e-6f * float(k % 3 - 1)); };
    int k = 0;
    for (int i = 1; i <= n; ++i) {
        for (int j = 1; j <= n; ++j) {
            ++k;
            const Vector4D a = pt(jitter(float(i), k), jitter(float(j), k + 1), 1);
            const Vector4D b = pt(jitter(float(i + 1), k + 2), float(j), 1);
            const Vector4D c = pt(float(i + 1), jitter(float(j + 1), k), 1);
            const Vector4D d = pt(float(i), float(j + 1), 1);
            s->addTriangle(new Triangle(a, b, c));
            s->addTriangle(new Triangle(c, d, a));
            if (k % 5 == 0) {
                s->addTriangle(new Triangle(a, b, c));
            }
            if (k % 7 == 0) {
                s->addTriangle(new Triangle(a, a, d));
            }
        }
    }
    return s;
}

std::vector<std::unique_ptr<Shape>> meshes()
{
    std::vector<std::unique_ptr<Shape>> all;
    all.emplace_back(sphere(20));
    all.emplace_back(sphere(36, 50.0f));
    all.emplace_back(cylinder(24, true));
    all.emplace_back(cylinder(30, false));
    all.emplace_back(grid(14));
    all.emplace_back(duplicated(12));
    return all;
}

TEST(ShapeIndexedTest, StaysConsistentThroughReductionsAndRemovalsOnVariedMeshes)
{
    CaptureStdout quiet;
    for (const auto& mesh : meshes()) {
        for (float ratio : {0.9f, 0.5f, 0.2f, 0.05f}) {
            for (unsigned seed : {1u, 7u, 42u}) {
                std::srand(seed);
                ShapeIndexed s;
                s.copyTriangles(mesh->getTriangles());
                ASSERT_EQ(inconsistency(s), "");
                const std::size_t points = s.getPointCount();
                const std::size_t triangles = s.getTriangleCount();
                const auto target = static_cast<std::size_t>(ratio * float(points));
                ASSERT_TRUE(s.reduceDetail(ratio)) << "ratio " << ratio << " seed " << seed;
                ASSERT_EQ(inconsistency(s), "") << "ratio " << ratio << " seed " << seed;
                EXPECT_LE(s.getPointCount(), target);
                EXPECT_LE(s.getTriangleCount(), triangles);
                // Triangle removals interleaved with a second reduction.
                int n = 0;
                while (s.getTriangleCount() > 0 && n++ < 5) {
                    auto it = s.getTriangles().begin();
                    std::advance(it, std::rand() % s.getTriangleCount());
                    Triangle* t = *it;
                    ASSERT_TRUE(s.removeTriangle(t));
                    delete t;
                    ASSERT_EQ(inconsistency(s), "");
                }
                if (s.getPointCount() >= 4) {
                    s.reduceDetail(0.5f);
                    ASSERT_EQ(inconsistency(s), "");
                }
            }
        }
    }
}

TEST(ShapeIndexedTest, SharesPointsAndRefusesDegenerateTriangles)
{
    ShapeIndexed s;
    s.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    s.addTriangle(new Triangle(pt(1, 0, 0), pt(1, 1, 0), pt(0, 1, 0)));
    ASSERT_EQ(s.getTriangleCount(), 2u);
    EXPECT_EQ(s.getPointCount(), 4u);
    const Triangle* a = s.getTriangles().front();
    const Triangle* b = s.getTriangles().back();
    EXPECT_EQ(a->points[1], b->points[0]);
    EXPECT_EQ(a->points[2], b->points[2]);
    EXPECT_FALSE(a->isOwned());
    EXPECT_EQ(s.getPointDataByValue(pt(1, 0, 0))->triangles.size(), 2u);
    EXPECT_EQ(s.getPointDataByValue(pt(2, 0, 0)), nullptr);
    EXPECT_TRUE(s.hasTriangle(Triangle(pt(0, 1, 0), pt(1, 1, 0), pt(1, 0, 0))));
    EXPECT_FALSE(s.hasTriangle(Triangle(pt(0, 1, 0), pt(1, 1, 0), pt(5, 0, 0))));

    CaptureStdout out;
    s.addTriangle(new Triangle(pt(0, 0, 0), pt(0, 0, 0), pt(3, 3, 0)));
    EXPECT_EQ(out.text(), "[Warning] degenerate triangle refused by ShapeIndexed\n");
    EXPECT_EQ(s.getTriangleCount(), 2u);
    EXPECT_EQ(s.getPointCount(), 4u);
    EXPECT_EQ(inconsistency(s), "");

    // Removing a triangle drops the point only it used; the triangle comes
    // back whole, owning copies of its corners and its normals.
    Triangle* last = s.getTriangles().back();
    last->setNormal(pt(1, 1, 0), Vector4D(0, 0, 1, 0));
    EXPECT_TRUE(s.removeTriangle(last));
    EXPECT_EQ(s.getPointCount(), 3u);
    EXPECT_TRUE(last->isOwned());
    EXPECT_TRUE(*last->points[1] == pt(1, 1, 0));
    EXPECT_FALSE(s.removeTriangle(last));
    delete last;
    EXPECT_EQ(s.getPointDataByValue(pt(1, 1, 0)), nullptr);
    EXPECT_EQ(inconsistency(s), "");
}

TEST(ShapeIndexedTest, RefusedRatiosChangeNothing)
{
    std::unique_ptr<Shape> mesh(sphere(10));
    ShapeIndexed s;
    s.copyTriangles(mesh->getTriangles());
    const std::size_t points = s.getPointCount();
    const std::size_t triangles = s.getTriangleCount();
    CaptureStdout quiet;
    EXPECT_FALSE(s.reduceDetail(0.0f));
    EXPECT_FALSE(s.reduceDetail(1.0f));
    EXPECT_FALSE(s.reduceDetail(-0.5f));
    EXPECT_FALSE(s.reduceDetail(0.5f / float(points)));  // target truncates to 0
    EXPECT_EQ(s.getPointCount(), points);
    EXPECT_EQ(s.getTriangleCount(), triangles);
    s.setNodeRemoval(false);
    EXPECT_FALSE(s.reduceDetail(0.5f));
    EXPECT_EQ(s.getPointCount(), points);
}

TEST(ShapeIndexedTest, ClosedMeshOfHundredPointsHalvesAndDropsCollapsedTriangles)
{
    Cylinder c(pt(0, 0, 0), 4.0f, 1.0f);
    c.setDivision(49);  // two rims of 49 and the two disc centres
    std::unique_ptr<Shape> mesh(c.createShape());
    std::srand(3);
    ShapeIndexed s(*mesh, 0.5f);
    EXPECT_EQ(inconsistency(s), "");
    EXPECT_EQ(s.getPointCount(), 50u);
    EXPECT_LT(s.getTriangleCount(), mesh->getTriangleCount());
    // A closed surface stays closed: every edge is shared by two triangles
    // (counting coincident triangles left by a collapse).
    std::map<std::pair<const Vector4D*, const Vector4D*>, int> edges;
    for (const Triangle* t : s.getTriangles()) {
        for (int i = 0; i < 3; ++i) {
            const Vector4D* a = t->points[i];
            const Vector4D* b = t->points[(i + 1) % 3];
            ++edges[{std::min(a, b), std::max(a, b)}];
        }
    }
    for (const auto& [edge, uses] : edges) {
        EXPECT_EQ(uses % 2, 0);
    }
}

TEST(ShapeIndexedTest, RankWalkVisitsWhatTheIteratorWalkVisits)
{
    std::unique_ptr<Shape> mesh(sphere(40));
    ShapeIndexed s;
    s.copyTriangles(mesh->getTriangles());
    CaptureStdout quiet;
    for (unsigned step = 0; step < 300 && s.getPointCount() > 3; ++step) {
        std::vector<Vector4D*> fast;
        std::vector<Vector4D*> plain;
        std::srand(step);
        s.sampleMinDeviationCandidates(fast, false);
        std::srand(step);
        s.sampleMinDeviationCandidates(plain, true);
        ASSERT_EQ(fast, plain) << "at removal " << step;
        ASSERT_EQ(fast.size(), std::min<std::size_t>(10, s.getPointCount()));
        std::srand(step);
        Vector4D* chosen = s.chooseMinDeviationPoint();
        std::srand(step);
        ASSERT_EQ(chosen, s.chooseMinDeviationPointByWalk());
        ASSERT_TRUE(s.removePointRaw(chosen));
        if (step % 50 == 0) {
            // New points invalidate the ranks; they must follow.
            s.addTriangle(new Triangle(pt(5, 5, float(step)), pt(6, 5, float(step)), pt(5, 6, float(step))));
        }
    }
    EXPECT_EQ(inconsistency(s), "");
}

TEST(ShapeIndexedTest, SmallShapesSampleConsecutivePointsAndStrideWraps)
{
    ShapeIndexed s;
    const Vector4D a = pt(0, 0, 0), b = pt(1, 0, 0), c = pt(0, 1, 0), d = pt(0, 0, 1);
    s.addTriangle(new Triangle(a, c, b));
    s.addTriangle(new Triangle(a, b, d));
    s.addTriangle(new Triangle(a, d, c));
    s.addTriangle(new Triangle(b, c, d));
    std::vector<Vector4D*> keys;
    for (const auto& entry : s.getPointsIndex()) {
        keys.push_back(entry.first);
    }
    ASSERT_EQ(keys.size(), 4u);
    std::vector<Vector4D*> visited;
    s.sampleMinDeviationCandidates(visited, false);
    EXPECT_EQ(visited, (std::vector<Vector4D*>{keys[1], keys[2], keys[3], keys[0]}));

    auto it = s.getPointsIndex().begin();
    auto walker = const_cast<ShapeIndexed::PointsIndex&>(s.getPointsIndex()).begin();
    s.moveIteratorAtDistance(walker, 6);  // 6 mod 4 = 2
    EXPECT_EQ(walker->first, keys[2]);
    CaptureStdout out;
    s.moveIteratorAtDistance(walker, -1);
    EXPECT_EQ(out.text(), "[Error] step<0 in iterator move for Shape Indexed\n");
    EXPECT_EQ(walker->first, keys[2]);
    EXPECT_EQ(it->first, keys[0]);
}

TEST(ShapeIndexedTest, CollapseMovesPointOntoNearestNeighbourAndReportsMisuse)
{
    // A fan around the centre (0, 0, 0); (0.5, 0, 0) is its nearest neighbour.
    ShapeIndexed s;
    const Vector4D centre = pt(0, 0, 0);
    const Vector4D ring[4] = {pt(0.5f, 0, 0), pt(0, 2, 0), pt(-2, 0, 0), pt(0, -2, 0)};
    for (int i = 0; i < 4; ++i) {
        s.addTriangle(new Triangle(centre, ring[i], ring[(i + 1) % 4]));
    }
    ShapeNode* node = s.getPointDataByValue(centre);
    float distance = 0.0f;
    Vector4D* nearest = node->getMinDistancePointExcluded(node->point, distance);
    ASSERT_NE(nearest, nullptr);
    EXPECT_TRUE(*nearest == ring[0]);
    EXPECT_FLOAT_EQ(distance, 0.5f);

    Vector4D* p = node->point;
    ASSERT_TRUE(s.removePointRaw(p));
    EXPECT_TRUE(s.isRemoved(p));
    EXPECT_EQ(s.getPointCount(), 4u);
    EXPECT_EQ(s.getTriangleCount(), 2u);  // the two triangles on the collapsed edge are gone
    for (const Triangle* t : s.getTriangles()) {
        EXPECT_TRUE(t->hasPoint(ring[0]));
    }
    EXPECT_EQ(inconsistency(s), "");

    CaptureStdout out;
    EXPECT_FALSE(s.removePointRaw(p));
    EXPECT_EQ(out.text(), "[information]the point has already been removed !\n");
    out.clear();
    Vector4D stranger = pt(9, 9, 9);
    EXPECT_FALSE(s.removePointRaw(&stranger));
    EXPECT_EQ(out.text(), "[Warning] attempt to remove not referenced point for ShapeIndexed !\n");
    out.clear();
    ShapeNode foreign(&stranger);
    EXPECT_FALSE(s.removeNode(&foreign));
    EXPECT_EQ(out.text(), "[Error] node point being removed not consistent for ShapeIndexed !\n");
    EXPECT_EQ(inconsistency(s), "");
}

TEST(ShapeIndexedTest, RemovingANodeInUseTakesItsTrianglesAlong)
{
    std::unique_ptr<Shape> mesh(grid(3));
    ShapeIndexed s;
    s.copyTriangles(mesh->getTriangles());
    ShapeNode* inner = s.getPointDataByValue(pt(1, 1, 0));
    ASSERT_NE(inner, nullptr);
    const std::size_t around = inner->triangles.size();
    const std::size_t before = s.getTriangleCount();
    EXPECT_TRUE(s.removeNode(inner));
    EXPECT_EQ(s.getTriangleCount(), before - around);
    EXPECT_EQ(inconsistency(s), "");
}

TEST(ShapeIndexedTest, IndexesNormalsBoundsAndTransformFollowTheSharedPoints)
{
    std::unique_ptr<Shape> mesh(sphere(24, 2.0f));
    ShapeIndexed s;
    s.copyTriangles(mesh->getTriangles());
    s.computeIndexes();
    EXPECT_TRUE(s.areIndexesComputed());
    int32_t expected = 0;
    for (const auto& [p, node] : s.getPointsIndex()) {
        EXPECT_EQ(node->index, expected++);
        // The area-weighted normal of a sphere point is its radial direction.
        Vector4D radial = *p;
        radial.w = 0.0f;
        radial.normalize3D();
        EXPECT_GT(node->normal.scal3D(radial), 0.98f);
        EXPECT_NEAR(node->normal.norm3D(), 1.0f, 1e-5f);
        EXPECT_EQ(node->normal.w, 0.0f);
    }
    Vector4D lo, hi, low;
    ASSERT_TRUE(s.getLimits(lo, hi));
    EXPECT_NEAR(lo.z, -2.0f, 1e-5f);
    EXPECT_NEAR(hi.z, 2.0f, 1e-5f);
    EXPECT_EQ(lo.w, 1.0f);
    ASSERT_TRUE(s.getMinPointY(low));
    EXPECT_NEAR(low.y, lo.y, 1e-6f);

    Matrix4D move = Matrix4D::getI4();
    move.setPosition(10.0f, 0.0f, 0.0f);
    s.transform(move);
    EXPECT_FALSE(s.areIndexesComputed());
    EXPECT_NE(s.getPointDataByValue(pt(10, 0, 2)), nullptr);
    EXPECT_EQ(s.getPointDataByValue(pt(0, 0, 2)), nullptr);
    EXPECT_EQ(inconsistency(s), "");

    ShapeIndexed empty;
    EXPECT_FALSE(empty.getLimits(lo, hi));
    EXPECT_FALSE(empty.getMinPointY(low));
}

TEST(ShapeIndexedTest, CopiesAreIndependentAndSurviveTheOriginal)
{
    std::unique_ptr<Shape> mesh(sphere(16));
    auto original = std::make_unique<ShapeIndexed>();
    original->copyTriangles(mesh->getTriangles());
    for (const Triangle* t : original->getTriangles()) {
        const_cast<Triangle*>(t)->setNormal(*t->points[0], Vector4D(0, 0, 1, 0));
    }
    std::srand(5);
    original->reduceDetail(0.6f);
    ShapeIndexed copy(*original);
    EXPECT_EQ(inconsistency(copy), "");
    EXPECT_TRUE(copy == *original);
    EXPECT_EQ(copy.getPointCount(), original->getPointCount());
    ShapeIndexed assigned;
    assigned.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    assigned = *original;
    original.reset();
    EXPECT_EQ(inconsistency(assigned), "");
    EXPECT_TRUE(assigned == copy);
    std::srand(6);
    EXPECT_TRUE(copy.reduceDetail(0.5f));
    EXPECT_EQ(inconsistency(copy), "");

    // Saved and loaded back, the triangles are indexed again.
    std::stringstream text;
    assigned.save(text);
    ShapeIndexed loaded;
    ASSERT_TRUE(loaded.load(text));
    EXPECT_TRUE(loaded == assigned);
    EXPECT_EQ(loaded.getPointCount(), assigned.getPointCount());
    EXPECT_EQ(inconsistency(loaded), "");

    loaded.clear();
    EXPECT_EQ(loaded.getPointCount(), 0u);
    EXPECT_EQ(loaded.getTriangleCount(), 0u);
    loaded.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    EXPECT_EQ(inconsistency(loaded), "");
}

}  // namespace
