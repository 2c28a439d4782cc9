// A clone draws its model's buffers under its own matrix: with identity
// projection and view, a model square at the centre of the window and a
// clone moved to the right half, only the clone's pixels light up, and
// moving the clone moves them.

#include "support/GLContextFixture.h"

#include "ModelTesting.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "scene/Clone3D.h"
#include "scene/ModelShape.h"
#include "scene/ShapeIndexed3D.h"
#include "support/CaptureStdout.h"
#include "support/ScratchDirectory.h"

#include <memory>
#include <vector>

namespace {

class Clone3DGLTest : public GLContextFixture {};

const char* const vertexSource =
    "#version 330\nin vec3 in_Position;\nuniform mat4 projection;\nuniform mat4 modelview;\n"
    "uniform mat4 refObject;\nvoid main()\n{\n"
    "    gl_Position = projection * modelview * refObject * vec4(in_Position, 1.0);\n}\n";
const char* const fragmentSource =
    "#version 330\nout vec4 colour;\nvoid main()\n{\n    colour = vec4(1.0, 1.0, 1.0, 1.0);\n}\n";

// The red channel of the 64 x 64 window, row 0 at the bottom.
std::vector<unsigned char> redChannel()
{
    std::vector<unsigned char> pixels(64 * 64 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 64, 64, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    std::vector<unsigned char> red(64 * 64);
    for (std::size_t i = 0; i < red.size(); ++i) {
        red[i] = pixels[i * 4];
    }
    return red;
}

// Lit pixels in columns [x0, x1) of the middle row.
int litInRow(const std::vector<unsigned char>& red, int x0, int x1)
{
    int lit = 0;
    for (int x = x0; x < x1; ++x) {
        lit += red[32 * 64 + x] > 128 ? 1 : 0;
    }
    return lit;
}

TEST_F(Clone3DGLTest, CloneDrawsTheModelsBuffersWhereTheCloneStands)
{
    const std::string dir = scratchDirectory("scene_clone_gltest");
    writeText(dir + "shaderVFlat.glsl", vertexSource);
    writeText(dir + "shaderFFlat.glsl", fragmentSource);
    ASSERT_TRUE(korvel::ShaderProgramManagerBase::init());
    korvel::ShaderProgramManager* manager = korvel::ShaderProgramManager::getInstance();
    manager->setPath(dir);
    CaptureStdout quiet;  // the flat program lacks the optional uniforms
    auto* program = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Flat"));
    ASSERT_NE(program, nullptr) << quiet.text();
    manager->useProgram(program);
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

    for (float x : {0.5f, -0.5f}) {
        clone->getMatrixObjectChange()->setPosition(x, 0.0f, 0.0f);
        clone->changeMatrixObject();
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        clone->draw();
        glFinish();
        const std::vector<unsigned char> red = redChannel();
        // The square spans 16 pixels; it is drawn around x = 48 or x = 16,
        // never at the model's own place in the middle.
        const int right = litInRow(red, 40, 56);
        const int left = litInRow(red, 8, 24);
        EXPECT_EQ(litInRow(red, 28, 36), 0) << x;
        EXPECT_EQ(x > 0 ? right : left, 16) << x;
        EXPECT_EQ(x > 0 ? left : right, 0) << x;
    }
    clone.reset();
    // The model's buffers outlive the clone and still draw.
    glClear(GL_COLOR_BUFFER_BIT);
    square->draw();
    glFinish();
    EXPECT_EQ(litInRow(redChannel(), 24, 40), 16);
    korvel::ShaderProgramManager::releaseInstance();
}

}  // namespace
