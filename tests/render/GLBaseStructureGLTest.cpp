#include "support/GLContextFixture.h"
#include "TestShaderSources.h"
#include "support/CaptureStdout.h"

#include "core/Matrix4D.h"
#include "geometry/GPattern.h"
#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderVertex.h"

#include <memory>
#include <vector>

namespace {

class GLBaseStructureGLTest : public GLContextFixture {
protected:
    void SetUp() override
    {
        GLContextFixture::SetUp();
        glfwGetFramebufferSize(window, &width, &height);
        glViewport(0, 0, width, height);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        CaptureStdout quiet;
        program = std::make_unique<ShaderProgramBase>();
        program->setVertexOwned(new ShaderVertex(testVertexSource()));
        program->setFragmentOwned(new ShaderFragment(testFragmentSource()));
        ASSERT_TRUE(program->make());
        program->use();
        program->setMatrixProjection(&identity);
        program->setMatrixView(&identity);
        program->setMatrixObject(&identity);
    }

    // One triangle over the lower-left half of clip space, normals and UVs 0.
    static void fillHalfScreen(GLBaseStructure& structure)
    {
        auto* vertices = new GPattern[3];
        vertices[0].x = vertices[0].y = vertices[1].y = vertices[2].x = -1.0f;
        vertices[1].x = vertices[2].y = 1.0f;
        structure.make(vertices, 3, new unsigned[3]{0, 1, 2}, 3);
    }

    // The framebuffer after drawing the structure on black, as 0 (black),
    // 1 (red) or -1 (anything else) per pixel, bottom row first. Colours are
    // constants, so one unit covers the float to 8-bit conversion.
    std::vector<int> render(GLBaseStructure& structure)
    {
        glClear(GL_COLOR_BUFFER_BIT);
        structure.draw();
        glFinish();
        std::vector<unsigned char> rgba(static_cast<std::size_t>(width) * height * 4);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
        std::vector<int> pixels;
        for (std::size_t i = 0; i < rgba.size(); i += 4) {
            const bool dark = rgba[i + 1] <= 1 && rgba[i + 2] <= 1;
            pixels.push_back(dark && rgba[i] <= 1 ? 0 : dark && rgba[i] >= 254 ? 1 : -1);
        }
        return pixels;
    }

    int at(const std::vector<int>& pixels, int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * width + x];
    }

    int width = 0;
    int height = 0;
    Matrix4D identity = Matrix4D::getI4();
    std::unique_ptr<ShaderProgramBase> program;
};

TEST_F(GLBaseStructureGLTest, DrawsTheTriangleOnTheRightPixels)
{
    GLBaseStructure structure;
    fillHalfScreen(structure);
    const std::vector<int> pixels = render(structure);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    // Either side of the hypotenuse, clear of the rasteriser's tie-breaking.
    EXPECT_EQ(std::vector<int>({at(pixels, 2, 2), at(pixels, 2, height / 2), at(pixels, width / 2 - 3, height / 2 - 3),
                                at(pixels, width / 2 + 2, height / 2 + 2), at(pixels, width - 3, height / 2)}),
              std::vector<int>({1, 1, 1, 0, 0}));
    // Seen from the front, the triangle survives back-face culling.
    glEnable(GL_CULL_FACE);
    EXPECT_EQ(at(render(structure), 2, 2), 1);
    glDisable(GL_CULL_FACE);

    // clear frees the arrays and the GL objects: nothing is drawn any more,
    // as with a structure made empty.
    EXPECT_TRUE(structure.clear());
    EXPECT_EQ(structure.getVertices(), nullptr);
    EXPECT_EQ(at(render(structure), 2, 2), 0);
    GLBaseStructure empty;
    EXPECT_TRUE(empty.make(nullptr, 0, nullptr, 0));
    EXPECT_EQ(at(render(empty), 2, 2), 0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(GLBaseStructureGLTest, ReorganizeReuploadsTheIndicesInPlace)
{
    GLBaseStructure structure;
    fillHalfScreen(structure);
    ASSERT_EQ(at(render(structure), 5, 5), 1);
    // The owner collapses its triangle in place; the driver's copy follows
    // only on reorganize.
    structure.getIndices()[1] = 0;
    structure.getIndices()[2] = 0;
    EXPECT_EQ(at(render(structure), 5, 5), 1);
    EXPECT_TRUE(structure.reorganize());
    EXPECT_EQ(at(render(structure), 5, 5), 0);
}

}  // namespace
