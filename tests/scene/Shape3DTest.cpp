// Drawable shapes without a display: the vertex data that make leaves in the
// structure (uploading fails cleanly without GL), depth ordering, the line
// test under a singular placement, grounding and an unknown program.

#include "scene/ShapeIndexed3D.h"
#include "SceneTesting.h"

#include "core/Matrix4D.h"
#include "geometry/GPattern.h"
#include "geometry/ShapeIndexed.h"
#include "geometry/TriangleTextured.h"
#include "render/GLBaseStructure.h"
#include "support/CaptureStdout.h"

#include <set>
#include <sstream>
#include <vector>

namespace {

using korvel::Shape;
using korvel::Shape3D;
using korvel::ShapeIndexed;
using korvel::ShapeIndexed3D;
using korvel::Triangle;

std::vector<unsigned> madeIndices(const Shape3D& object)
{
    const GLBaseStructure* s = object.getStructure();
    const unsigned* first = s->getIndices();
    const std::size_t count = object.getShape()->getTriangleCount() * 3;
    return first == nullptr ? std::vector<unsigned>() : std::vector<unsigned>(first, first + count);
}

TEST(Shape3DTest, MakeGivesEachTriangleItsOwnFlatVerticesAndTexturedOnesTheirUV)
{
    Shape3D object;
    object.getShape()->addTriangle(new Triangle(at(0, 0, 0), at(2, 0, 0), at(0, 2, 0)));
    const Vector4D uv[3] = {Vector4D(0.25f, 0.5f, 0, 0), Vector4D(1, 0, 0, 0), Vector4D(0, 1, 0, 0)};
    object.getShape()->addTriangle(new korvel::TriangleTextured(at(0, 0, 0), at(0, 0, 3), at(0, 3, 0), nullptr, nullptr,
                                                                nullptr, nullptr, &uv[0], &uv[1], &uv[2]));
    CaptureStdout out;
    EXPECT_FALSE(object.make());  // no GL here: the upload fails, the arrays stay
    EXPECT_FALSE(object.isMade());
    EXPECT_TRUE(object.isTextured());
    const GPattern* v = object.getStructure()->getVertices();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(madeIndices(object), (std::vector<unsigned>{0, 1, 2, 3, 4, 5}));
    EXPECT_FLOAT_EQ(v[1].x, 2.0f);
    EXPECT_FLOAT_EQ(v[2].nz, 1.0f);   // face normal, normalised
    EXPECT_FLOAT_EQ(v[3].nx, -1.0f);  // (0,0,3) x (0,3,0) points to -x
    EXPECT_FLOAT_EQ(v[3].u, 0.25f);
    EXPECT_FLOAT_EQ(v[3].v, 0.5f);
}

TEST(Shape3DTest, DepthOrderingPutsTheFarthestTriangleFirst)
{
    Shape3D object;
    for (float z : {-1.0f, -5.0f, -3.0f}) {
        object.getShape()->addTriangle(flatTriangle(0, 0, z));
    }
    CaptureStdout quiet;
    object.make();
    Matrix4D view = Matrix4D::getI4();
    object.reorganize(view);
    EXPECT_EQ(madeIndices(object), (std::vector<unsigned>{3, 4, 5, 6, 7, 8, 0, 1, 2}));  // -5, -3, -1

    // Seen from the other side (the eye behind z = -6) the order turns over.
    view.setPosition(0.0f, 0.0f, 6.0f);
    object.reorganize(view);
    EXPECT_EQ(madeIndices(object), (std::vector<unsigned>{0, 1, 2, 6, 7, 8, 3, 4, 5}));
}

// Placed shapes are picked in the world tests; a placement that cannot be
// undone is refused.
TEST(Shape3DTest, LineTestRefusesASingularPlacement)
{
    Shape3D object;
    object.getShape()->addTriangle(flatTriangle(0, 0, 0));
    *object.getMatrixObjectChange() = Matrix4D();  // all zeros
    Triangle hit;
    CaptureStdout out;
    EXPECT_FALSE(object.getIntersectingLine(at(0.25f, 0.25f, 5.0f), Vector4D(0.0f, 0.0f, -1.0f, 0.0f), hit));
    EXPECT_EQ(out.text(), "[Error] shape3D Matrix not invertible ?\n");
}

TEST(Shape3DTest, GroundingMovesTheGeometryAndTheLimitsFollow)
{
    for (bool indexed : {false, true}) {
        Shape3D plain;
        ShapeIndexed3D smooth;
        Shape3D& object = indexed ? smooth : plain;
        object.getShape()->addTriangle(new Triangle(at(1, -2, 0), at(2, 1, 0), at(1, 1, 1)));
        object.setToMinPointY();
        Vector4D low;
        Vector4D high;
        ASSERT_TRUE(object.getShape()->getLimits(low, high));
        EXPECT_FLOAT_EQ(low.x, 0.0f) << indexed;
        EXPECT_FLOAT_EQ(low.y, 0.0f) << indexed;
        EXPECT_FLOAT_EQ(high.y, 3.0f) << indexed;
        EXPECT_FLOAT_EQ(object.getWorldMax().y, 3.0f) << indexed;
    }
}

TEST(Shape3DTest, IndexedMakeSharesPointsAndRefusesInconsistentIndexes)
{
    ShapeIndexed3D object;
    object.getShape()->addTriangle(new Triangle(at(0, 0, 0), at(1, 0, 0), at(0, 1, 0)));
    object.getShape()->addTriangle(new Triangle(at(1, 0, 0), at(1, 1, 0), at(0, 1, 0)));
    CaptureStdout out;
    object.make();
    const GPattern* v = object.getStructure()->getVertices();
    const std::vector<unsigned> indices = madeIndices(object);
    ASSERT_EQ(indices.size(), 6u);
    EXPECT_EQ(std::set<unsigned>(indices.begin(), indices.end()).size(), 4u);
    int t = 0;
    for (const Triangle* triangle : object.getShape()->getTriangles()) {
        for (int corner = 0; corner < 3; ++corner) {
            const GPattern& made = v[indices[3 * t + corner]];
            EXPECT_FLOAT_EQ(made.x, triangle->points[corner]->x);
            EXPECT_FLOAT_EQ(made.y, triangle->points[corner]->y);
            EXPECT_FLOAT_EQ(made.nz, 1.0f);
        }
        ++t;
    }

    // A corner that is no shared point of the shape, swapped in behind the
    // shape's back.
    Triangle* first = object.getShape()->getTriangles().front();
    Vector4D* const kept = first->points[0];
    Vector4D stranger = at(5, 5, 5);
    first->points[0] = &stranger;
    out.clear();
    EXPECT_FALSE(object.make());
    EXPECT_EQ(out.text(), "[Error] indexes not consistent in ShapeIndexed3D\n");
    first->points[0] = kept;

    object.releaseShape();
    out.clear();
    EXPECT_FALSE(object.make());
    EXPECT_EQ(out.text(), "[Error] shapeIndexed is not defined in ShapeIndexed3D\n");

    // A plain shape handed over is indexed.
    auto* plain = new Shape();
    plain->addTriangle(flatTriangle(0, 0, 0));
    object.setShape(plain);
    ASSERT_NE(dynamic_cast<ShapeIndexed*>(object.getShape()), nullptr);
    EXPECT_EQ(object.getShapeIndexed()->getPointCount(), 3u);
}

// Saved programs come back by name in the world's round trips.
TEST(Shape3DTest, AnUnknownProgramIsReported)
{
    FakePrograms programs({"Wood"});
    Shape3D loaded;
    loaded.setShaderProgram(FakePrograms::get("Wood"));
    loaded.getShape()->addTriangle(flatTriangle(0, 0, 0));
    std::istringstream unknown("Shape3D\n1\nMarble\nShape\n0\n");
    CaptureStdout out;
    EXPECT_FALSE(loaded.load(unknown));
    // The manager tried to build it first and said why it could not.
    const std::string said = out.text();
    const std::string last = "[Error] ShaderType not found in Object3D\n";
    EXPECT_EQ(said.substr(said.size() - std::min(said.size(), last.size())), last);
    EXPECT_EQ(loaded.getShaderProgram(), nullptr);
    EXPECT_EQ(loaded.getShape()->getTriangleCount(), 0u);  // read all the same
}

}  // namespace
