#include "geometry/Cylinder.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/ShapeNode.h"
#include "geometry/Sphere.h"
#include "geometry/Triangle.h"
#include "support/CaptureStdout.h"

#include "GeometryTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <random>
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

// Empty when the indexed shape is consistent, else the first rule broken:
// triangles link only indexed, live shared points (degenerate ones, with two
// or three corners on one point, too); each node lists exactly the triangles
// using its point, once each; the octree finds every point by value and
// holds only live nodes.
std::string inconsistency(const ShapeIndexed& s)
{
    const auto& index = s.getPointsIndex();
    // A triangle listed twice shows as a node listing it fewer times than it is used.
    std::map<const Vector4D*, std::multiset<const Triangle*>> users;
    for (const Triangle* t : s.getTriangles()) {
        if (t->isOwned()) {
            return "triangle owning its points";
        }
        const std::set<Vector4D*> corners(std::begin(t->points), std::end(t->points));
        for (Vector4D* p : corners) {
            if (index.count(p) == 0 || s.isRemoved(p)) {
                return "triangle point not in the index, or removed";
            }
            users[p].insert(t);
        }
    }
    std::set<const ShapeNode*> live;
    for (const auto& [p, node] : index) {
        live.insert(node);
        if (node->point != p || node->isEmpty()) {
            return "node point differs from its key, or node without triangle";
        }
        if (std::multiset<const Triangle*>(node->triangles.begin(), node->triangles.end()) != users[p]) {
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
    if (values.size() != s.getOctree().size() || values.size() > index.size()
        || std::any_of(values.begin(), values.end(), [&](const ShapeNode* n) { return live.count(n) == 0; })) {
        return "octree holds a removed node, or more than the index";
    }
    return "";
}

template <typename Primitive>
std::unique_ptr<Shape> generated(Primitive primitive, int division)
{
    primitive.setDivision(division);
    return std::unique_ptr<Shape>(primitive.createShape());
}

std::unique_ptr<Shape> sphere(int division, float radius = 1.0f)
{
    return generated(Sphere(pt(0, 0, 0), radius), division);
}

// n x n quads in a plane, with a border: an open surface. With duplicates,
// neighbouring quads write their shared corners slightly differently (within
// the equality tolerance), some triangles come twice, and degenerate ones
// as model files have them are mixed in: two corners on one point, three in
// a line, and all three on a point of their own.
std::unique_ptr<Shape> grid(int n, bool duplicates = false)
{
    auto s = std::make_unique<Shape>();
    for (int k = 0; k < n * n; ++k) {
        const float x = float(k / n + 1), y = float(k % n + 1), e = duplicates ? 2e-6f * float(k % 3 - 1) : 0.0f;
        const Vector4D a = pt(x * (1 + e), y, 1), b = pt(x + 1, y * (1 - e), 1);
        const Vector4D c = pt(x + 1, y + 1, 1), d = pt(x, (y + 1) * (1 + e), 1);
        s->addQuad(a, b, c, d);
        if (duplicates && k % 5 == 0) {
            s->addTriangle(new Triangle(a, b, c));
        }
        if (duplicates && k % 7 == 0) {
            s->addTriangle(new Triangle(a, a, d));
            s->addTriangle(new Triangle(a, c, pt(x + 2, y + 2, 1)));
        }
        if (duplicates && k % 11 == 0) {
            s->addTriangle(new Triangle(pt(-x, -y, 5), pt(-x, -y, 5), pt(-x, -y, 5)));
        }
    }
    return s;
}

// An indexed copy of a shape, checked before it is handed out.
std::unique_ptr<ShapeIndexed> indexed(const Shape& mesh)
{
    auto s = std::make_unique<ShapeIndexed>();
    s->copyTriangles(mesh.getTriangles());
    EXPECT_EQ(inconsistency(*s), "");
    return s;
}

TEST(ShapeIndexedTest, StaysConsistentThroughReductionsRemovalsAndMovesOnVariedMeshes)
{
    CaptureStdout quiet;
    Matrix4D shift = Matrix4D::getI4(), far = Matrix4D::getI4(), mirror = Matrix4D::getI4();
    shift.setPosition(3.0f, -1.0f, 2.0f);
    far.setPosition(1e8f, 0.0f, 0.0f);  // coordinates merge on the way
    mirror.setColumn(0, Vector4D(-1.0f, 0.0f, 0.0f, 0.0f));
    Matrix4D flat = Matrix4D::getI4() * 0.0f;  // every point on one
    flat.setColumn(3, Vector4D(0.0f, 0.0f, 0.0f, 1.0f));
    const Matrix4D moves[] = {shift, far, mirror, Matrix4D::getRz(0.3f), flat};
    std::size_t run = 0;
    const Vector4D from = pt(1, -2, 0.5f), to = pt(3, 1, 4);
    std::unique_ptr<Shape> meshes[] = {sphere(20), sphere(36, 50.0f), grid(14), grid(12, true),
                                       generated(Cylinder(from, to, 1.5f, 0.75f, true), 24),
                                       generated(Cylinder(from, to, 1.5f, 0.75f, false), 30)};
    for (const auto& mesh : meshes) {
        for (float ratio : {0.9f, 0.5f, 0.2f, 0.05f}) {
            for (unsigned seed : {1u, 7u, 42u}) {
                std::srand(seed);
                auto s = indexed(*mesh);
                const std::size_t triangles = s->getTriangleCount();
                const auto target = static_cast<std::size_t>(ratio * float(s->getPointCount()));
                ASSERT_TRUE(s->reduceDetail(ratio)) << "ratio " << ratio << " seed " << seed;
                ASSERT_EQ(inconsistency(*s), "") << "ratio " << ratio << " seed " << seed;
                EXPECT_LE(s->getPointCount(), target);
                EXPECT_LE(s->getTriangleCount(), triangles);
                // The octree must follow the moved points, reduction having
                // left keys in it that only route.
                const Matrix4D& move = moves[run++ % 5];
                std::vector<Vector4D> moved;
                for (const auto& entry : s->getPointsIndex()) {
                    moved.push_back(move * *entry.first);
                }
                s->transform(move);
                ASSERT_EQ(inconsistency(*s), "");
                for (const Vector4D& p : moved) {
                    ASSERT_NE(s->getPointDataByValue(p), nullptr);
                }
                // Triangle removals interleaved with a second reduction.
                for (int n = 0; n < 5 && s->getTriangleCount() > 0; ++n) {
                    Triangle* t = *std::next(s->getTriangles().begin(), std::rand() % s->getTriangleCount());
                    ASSERT_TRUE(s->removeTriangle(t));
                    delete t;
                    ASSERT_EQ(inconsistency(*s), "");
                }
                if (s->getPointCount() >= 4) {
                    s->reduceDetail(0.5f);
                    ASSERT_EQ(inconsistency(*s), "");
                }
            }
        }
    }
}

TEST(ShapeIndexedTest, SharingDependsNeitherOnTheOrderOfTrianglesNorOnExpectedPoints)
{
    auto bits = [](const Vector4D& p) { return std::vector<float>{p.x, p.y, p.z, p.w}; };
    std::unique_ptr<Shape> meshes[] = {sphere(30), grid(20)};
    for (const auto& mesh : meshes) {
        const std::vector<const Triangle*> given(mesh->getTriangles().begin(), mesh->getTriangles().end());
        std::set<std::vector<float>> distinct;
        for (const Triangle* t : given) {
            for (const Vector4D* p : t->points) {
                distinct.insert(bits(*p));
            }
        }
        std::vector<const Triangle*> reversed(given.rbegin(), given.rend()), shuffled = given;
        std::shuffle(shuffled.begin(), shuffled.end(), std::minstd_rand(11));
        struct Case {
            const std::vector<const Triangle*>* order;
            bool expected;
        };
        for (const Case& c : {Case{&given, false}, Case{&reversed, false}, Case{&shuffled, false},
                              Case{&given, true}, Case{&shuffled, true}}) {
            ShapeIndexed s;
            if (c.expected) {
                // Announced in another order, with points no triangle brings.
                std::vector<Vector4D> points;
                for (const Triangle* t : reversed) {
                    points.insert(points.end(), {*t->points[0], *t->points[1], *t->points[2]});
                }
                for (int i = 0; i < 10; ++i) {
                    points.push_back(pt(100.0f + float(i), 0, 0));
                }
                s.expectPoints(points);
            }
            for (const Triangle* t : *c.order) {
                s.addTriangle(new Triangle(*t));
            }
            s.endExpectedPoints();
            ASSERT_EQ(inconsistency(s), "");
            // Each exact value is one shared point, whatever the order.
            EXPECT_EQ(s.getPointCount(), distinct.size());
            auto added = c.order->begin();
            for (const Triangle* t : s.getTriangles()) {
                for (int i = 0; i < 3; ++i) {
                    ASSERT_EQ(bits(*t->points[i]), bits(*(*added)->points[i]));
                }
                ++added;
            }
            EXPECT_EQ(s.getOctree().size(), s.getPointCount());
            EXPECT_LT(s.getOctree().getEmptyNodeCount(), 10u);  // unclaimed keys go, unless they route
        }
    }
}

TEST(ShapeIndexedTest, ReductionRefusesBadRatiosAndHalvesAClosedMeshOfHundredPoints)
{
    // Two rims of 49 and the two disc centres.
    std::unique_ptr<Shape> mesh = generated(Cylinder(pt(0, 0, 0), 4.0f, 1.0f), 49);
    auto s = indexed(*mesh);
    ASSERT_EQ(s->getPointCount(), 100u);
    const std::size_t triangles = s->getTriangleCount();
    {
        CaptureStdout quiet;
        for (float refused : {0.0f, 1.0f, -0.5f, 0.005f}) {  // 0.005 x 100 truncates to 0
            EXPECT_FALSE(s->reduceDetail(refused)) << refused;
        }
        s->setNodeRemoval(false);  // emptied points would stay: the count could never fall
        EXPECT_FALSE(s->reduceDetail(0.5f));
    }
    EXPECT_EQ(s->getPointCount(), 100u);
    EXPECT_EQ(s->getTriangleCount(), triangles);

    std::srand(3);
    ShapeIndexed halved(*mesh, 0.5f);
    EXPECT_EQ(inconsistency(halved), "");
    EXPECT_EQ(halved.getPointCount(), 50u);
    EXPECT_LT(halved.getTriangleCount(), triangles);
    // A closed surface stays closed: every edge is shared by two triangles
    // (counting coincident triangles left by a collapse).
    std::map<std::pair<const Vector4D*, const Vector4D*>, int> edges;
    for (const Triangle* t : halved.getTriangles()) {
        for (int i = 0; i < 3; ++i) {
            ++edges[std::minmax<Vector4D*>(t->points[i], t->points[(i + 1) % 3])];
        }
    }
    for (const auto& [edge, uses] : edges) {
        EXPECT_EQ(uses % 2, 0);
    }
}

TEST(ShapeIndexedTest, RankWalkVisitsWhatTheIteratorWalkVisits)
{
    auto s = indexed(*sphere(40));
    CaptureStdout quiet;
    for (unsigned step = 0; step < 300 && s->getPointCount() > 3; ++step) {
        std::vector<Vector4D*> fast, plain;
        std::srand(step);
        s->sampleMinDeviationCandidates(fast, false);
        std::srand(step);
        s->sampleMinDeviationCandidates(plain, true);
        ASSERT_EQ(fast, plain) << "at removal " << step;
        ASSERT_EQ(fast.size(), std::min<std::size_t>(10, s->getPointCount()));
        std::srand(step);
        Vector4D* chosen = s->chooseMinDeviationPoint();
        std::srand(step);
        ASSERT_EQ(chosen, s->chooseMinDeviationPointByWalk());
        ASSERT_TRUE(s->removePointRaw(chosen));
        if (step % 50 == 0) {
            // New points invalidate the ranks; they must follow.
            s->addTriangle(new Triangle(pt(5, 5, float(step)), pt(6, 5, float(step)), pt(5, 6, float(step))));
        }
    }
    EXPECT_EQ(inconsistency(*s), "");
}

TEST(ShapeIndexedTest, SmallFanSharesSamplesCollapsesAndReportsMisuse)
{
    // A fan around the centre (0, 0, 0); (0.5, 0, 0) is its nearest neighbour.
    ShapeIndexed s;
    const Vector4D centre = pt(0, 0, 0);
    const Vector4D ring[4] = {pt(0.5f, 0, 0), pt(0, 2, 0), pt(-2, 0, 0), pt(0, -2, 0)};
    for (int i = 0; i < 4; ++i) {
        s.addTriangle(new Triangle(centre, ring[i], ring[(i + 1) % 4]));
    }
    // Degenerate, yet entered and listed once by the centre's node.
    auto* flat = new Triangle(centre, centre, ring[1]);
    {
        CaptureStdout out;
        s.addTriangle(flat);
        EXPECT_EQ(out.text(), "");
    }
    ASSERT_EQ(s.getTriangleCount(), 5u);
    EXPECT_EQ(s.getPointCount(), 5u);  // fifteen corners on five shared points
    EXPECT_EQ(inconsistency(s), "");

    std::vector<Vector4D*> keys;
    for (const auto& entry : s.getPointsIndex()) {
        keys.push_back(entry.first);
    }
    auto walker = const_cast<ShapeIndexed::PointsIndex&>(s.getPointsIndex()).begin();
    s.moveIteratorAtDistance(walker, 7);  // 7 mod 5 = 2
    EXPECT_EQ(walker->first, keys[2]);
    {
        CaptureStdout out;
        s.moveIteratorAtDistance(walker, -1);
        EXPECT_EQ(out.text(), "[Error] step<0 in iterator move for Shape Indexed\n");
        EXPECT_EQ(walker->first, keys[2]);
    }
    ShapeNode* node = s.getPointDataByValue(centre);
    float distance = 0.0f;
    EXPECT_EQ(node->getMinDistancePointExcluded(node->point, distance), s.getPointDataByValue(ring[0])->point);
    EXPECT_FLOAT_EQ(distance, 0.5f);

    Vector4D* p = node->point;
    ASSERT_TRUE(s.removePointRaw(p));
    EXPECT_TRUE(s.isRemoved(p));
    EXPECT_EQ(s.getTriangleCount(), 2u);  // those on the collapsed edge are gone, and the flat one
    for (const Triangle* t : s.getTriangles()) {
        EXPECT_TRUE(t->hasPoint(ring[0]));
    }
    EXPECT_EQ(inconsistency(s), "");

    Vector4D stranger = pt(9, 9, 9);
    ShapeNode foreign(&stranger);
    const std::pair<std::function<bool()>, const char*> misuses[] = {
        {[&] { return s.removePointRaw(p); }, "[information]the point has already been removed !\n"},
        {[&] { return s.removePointRaw(&stranger); },
         "[Warning] attempt to remove not referenced point for ShapeIndexed !\n"},
        {[&] { return s.removeNode(&foreign); },
         "[Error] node point being removed not consistent for ShapeIndexed !\n"},
    };
    for (const auto& [misuse, message] : misuses) {
        CaptureStdout out;
        EXPECT_FALSE(misuse());
        EXPECT_EQ(out.text(), message);
    }

    // A removed triangle comes back owning copies of its corners; the point
    // only it used goes.
    Triangle* last = s.getTriangles().back();
    EXPECT_TRUE(s.removeTriangle(last));
    EXPECT_FALSE(s.removeTriangle(last));
    EXPECT_TRUE(last->isOwned() && *last->points[2] == ring[3]);
    delete last;
    EXPECT_EQ(s.getPointCount(), 3u);
    EXPECT_EQ(inconsistency(s), "");

    // A node still in use takes its triangles along.
    EXPECT_TRUE(s.removeNode(s.getPointDataByValue(ring[0])));
    EXPECT_EQ(s.getTriangleCount(), 0u);
    EXPECT_EQ(inconsistency(s), "");
}

TEST(ShapeIndexedTest, DegenerateFacesAreKeptAndNormalsAndCollapsesCopeWithThem)
{
    ShapeIndexed s;
    const Vector4D a = pt(0, 0, 0), b = pt(1, 0, 0), c = pt(0, 1, 0), inLine = pt(2, 0, 0), lone = pt(5, 5, 5);
    s.addTriangle(new Triangle(a, b, c));
    s.addTriangle(new Triangle(a, a, b));           // two corners on one point
    s.addTriangle(new Triangle(a, b, inLine));      // three in a line
    s.addTriangle(new Triangle(lone, lone, lone));  // all three on a point of its own
    EXPECT_EQ(s.getTriangleCount(), 4u);
    EXPECT_EQ(inconsistency(s), "");

    // Faces without area add nothing to a normal; a point that has only
    // such faces has none, and no NaN either.
    s.computeIndexes();
    for (const auto& [p, node] : s.getPointsIndex()) {
        EXPECT_TRUE(std::isfinite(node->normal.x) && std::isfinite(node->normal.y) && std::isfinite(node->normal.z));
    }
    EXPECT_FLOAT_EQ(s.getPointDataByValue(a)->normal.z, 1.0f);
    EXPECT_EQ(s.getPointDataByValue(lone)->normal.norm3D(), 0.0f);
    EXPECT_EQ(s.getPointDataByValue(inLine)->normal.norm3D(), 0.0f);

    // A point with nothing to collapse onto goes with its faces.
    CaptureStdout out;
    ASSERT_TRUE(s.removePointRaw(s.getPointDataByValue(lone)->point));
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(s.getPointDataByValue(lone), nullptr);
    EXPECT_EQ(s.getTriangleCount(), 3u);
    EXPECT_EQ(inconsistency(s), "");
}

TEST(ShapeIndexedTest, IndexesNormalsBoundsAndCopiesFollowTheSharedPoints)
{
    auto original = indexed(*sphere(16));
    original->computeIndexes();
    int32_t expected = 0;
    for (const auto& [p, node] : original->getPointsIndex()) {
        EXPECT_EQ(node->index, expected++);
        // The area-weighted normal of a sphere point is its radial direction.
        Vector4D radial = *p;
        radial.w = 0.0f;
        radial.normalize3D();
        EXPECT_GT(node->normal.scal3D(radial), 0.98f);
        EXPECT_NEAR(node->normal.norm3D(), 1.0f, 1e-5f);
    }

    // Copies and a loaded save of a reduced shape with normals stand alone.
    for (const Triangle* t : original->getTriangles()) {
        const_cast<Triangle*>(t)->setNormal(*t->points[0], Vector4D(0, 0, 1, 0));
    }
    std::srand(5);
    original->reduceDetail(0.6f);
    ShapeIndexed copy(*original);
    ShapeIndexed assigned;
    assigned.addTriangle(new Triangle(pt(0, 0, 0), pt(1, 0, 0), pt(0, 1, 0)));
    assigned = *original;
    original.reset();
    EXPECT_EQ(inconsistency(copy), "");
    EXPECT_EQ(inconsistency(assigned), "");
    EXPECT_TRUE(assigned == copy && assigned.getPointCount() == copy.getPointCount());
    std::srand(6);
    EXPECT_TRUE(copy.reduceDetail(0.5f));
    EXPECT_EQ(inconsistency(copy), "");

    // Saved and loaded back, the triangles are indexed again.
    std::stringstream text;
    assigned.save(text);
    ShapeIndexed loaded;
    ASSERT_TRUE(loaded.load(text));
    EXPECT_TRUE(loaded == assigned && loaded.getPointCount() == assigned.getPointCount());
    EXPECT_EQ(inconsistency(loaded), "");
}

}  // namespace
