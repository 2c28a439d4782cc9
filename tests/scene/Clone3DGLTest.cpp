// A clone draws its model's buffers under its own matrix: with identity
// projection and view, a model square at the centre of the window and a
// clone moved to the right half, only the clone's pixels light up, and
// moving the clone moves them.

#include "SceneGLTesting.h"
#include "scene/Clone3D.h"
#include "scene/ModelShape.h"
#include "scene/ShapeIndexed3D.h"

#include <memory>
#include <vector>

namespace {

class Clone3DGLTest : public GLContextFixture {};

// Lit pixels in columns [x0, x1) of the middle row.
int litInRow(const std::vector<unsigned char>& pixels, int x0, int x1)
{
    int lit = 0;
    for (int x = x0; x < x1; ++x) {
        lit += pixels[(32 * side + x) * 4] > 128 ? 1 : 0;
    }
    return lit;
}

TEST_F(Clone3DGLTest, CloneDrawsTheModelsBuffersWhereTheCloneStands)
{
    Programs programs;
    ShaderProgramBase* program = Programs::get("Red");
    korvel::ShaderProgramManager::getInstance()->useProgram(program);
    Matrix4D identity = Matrix4D::getI4();
    program->setMatrixProjection(&identity);
    program->setMatrixView(&identity);

    // A square of side 0.5 around the centre, in normalised device units.
    auto* square = new korvel::ShapeIndexed3D();
    square->setShaderProgram(program);
    const float h = 0.25f;
    square->getShape()->addQuad(Vector4D(-h, -h, 0, 1), Vector4D(h, -h, 0, 1), Vector4D(h, h, 0, 1),
                                Vector4D(-h, h, 0, 1));
    ASSERT_TRUE(square->make());
    korvel::ModelShape model;
    model.addObject(0, square);
    std::unique_ptr<korvel::IObject3D> clone(model.createClone());
    ASSERT_TRUE(clone->make());
    EXPECT_EQ(static_cast<korvel::Clone3D*>(clone.get())->getStructure(), square->getStructure());

    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    for (float x : {0.5f, -0.5f}) {
        clone->getMatrixObjectChange()->setPosition(x, 0.0f, 0.0f);
        clone->changeMatrixObject();
        glClear(GL_COLOR_BUFFER_BIT);
        clone->draw();
        const std::vector<unsigned char> pixels = readWindow();
        // The square spans 16 pixels; it is drawn around x = 48 or x = 16,
        // never at the model's own place in the middle.
        const int right = litInRow(pixels, 40, 56);
        const int left = litInRow(pixels, 8, 24);
        EXPECT_EQ(litInRow(pixels, 28, 36), 0) << x;
        EXPECT_EQ(x > 0 ? right : left, 16) << x;
        EXPECT_EQ(x > 0 ? left : right, 0) << x;
    }
    clone.reset();
    // The model's buffers outlive the clone and still draw.
    glClear(GL_COLOR_BUFFER_BIT);
    square->draw();
    EXPECT_EQ(litInRow(readWindow(), 24, 40), 16);
}

}  // namespace
