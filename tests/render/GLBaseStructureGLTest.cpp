#include "GLContextFixture.h"
#include "TestShaderSources.h"
#include "support/CaptureStdout.h"

#include "core/Matrix4D.h"
#include "geometry/GPattern.h"
#include "render/GLEntryPoint.h"
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
        identity = Matrix4D::getI4();
        program->setMatrixProjection(&identity);
        program->setMatrixView(&identity);
        program->setMatrixObject(&identity);
    }

    void TearDown() override { program.reset(); }

    // One triangle over the lower-left half of clip space, normals and UVs 0.
    static void fillHalfScreen(GLBaseStructure& structure)
    {
        auto* vertices = new GPattern[3];
        vertices[0].x = -1.0f;
        vertices[0].y = -1.0f;
        vertices[1].x = 1.0f;
        vertices[1].y = -1.0f;
        vertices[2].x = -1.0f;
        vertices[2].y = 1.0f;
        structure.make(vertices, 3, new unsigned[3]{0, 1, 2}, 3);
    }

    std::vector<unsigned char> render(GLBaseStructure& structure)
    {
        glClear(GL_COLOR_BUFFER_BIT);
        structure.draw();
        glFinish();
        std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 4);
        glReadBuffer(GL_BACK);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }

    bool isRed(const std::vector<unsigned char>& pixels, int x, int y) const
    {
        const unsigned char* p = &pixels[(static_cast<std::size_t>(y) * width + x) * 4];
        return p[0] >= 254 && p[1] <= 1 && p[2] <= 1;
    }

    bool isBlack(const std::vector<unsigned char>& pixels, int x, int y) const
    {
        const unsigned char* p = &pixels[(static_cast<std::size_t>(y) * width + x) * 4];
        return p[0] <= 1 && p[1] <= 1 && p[2] <= 1;
    }

    int width = 0;
    int height = 0;
    std::unique_ptr<ShaderProgramBase> program;
    Matrix4D identity;
};

TEST_F(GLBaseStructureGLTest, DrawsTheTriangleOnTheRightPixels)
{
    GLBaseStructure structure;
    fillHalfScreen(structure);
    const std::vector<unsigned char> pixels = render(structure);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    // The hypotenuse runs through the pixel centres where x + y = size - 1
    // (a square framebuffer), so only those edge pixels depend on the
    // rasteriser's tie-breaking rule; a band of two pixels either side is
    // skipped for that reason alone. Every other pixel is exactly red or
    // exactly black: colours are constants, so one unit covers the float to
    // 8-bit conversion.
    ASSERT_EQ(width, height);
    int checked = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int diagonal = x + y - (width - 1);
            if (diagonal <= -3) {
                ASSERT_TRUE(isRed(pixels, x, y)) << x << "," << y;
                ++checked;
            } else if (diagonal >= 3) {
                ASSERT_TRUE(isBlack(pixels, x, y)) << x << "," << y;
                ++checked;
            }
        }
    }
    EXPECT_GT(checked, width * height * 3 / 4);

    // Face culling of the back face: seen from the front, the triangle stays.
    glEnable(GL_CULL_FACE);
    EXPECT_TRUE(isRed(render(structure), 2, 2));
    glDisable(GL_CULL_FACE);
}

TEST_F(GLBaseStructureGLTest, ReorganizeReuploadsTheIndicesInPlace)
{
    GLBaseStructure structure;
    fillHalfScreen(structure);
    ASSERT_TRUE(isRed(render(structure), 5, 5));

    // The owner collapses its triangle in place: a degenerate triangle
    // covers no pixel once the index buffer follows.
    unsigned* indices = structure.getIndices();
    indices[1] = 0;
    indices[2] = 0;
    EXPECT_TRUE(isRed(render(structure), 5, 5));  // not uploaded yet
    EXPECT_TRUE(structure.reorganize());
    EXPECT_TRUE(isBlack(render(structure), 5, 5));
}

TEST_F(GLBaseStructureGLTest, EmptyGeometryAndBufferUsage)
{
    PFNGLGETBUFFERPARAMETERIVPROC getBufferParameter = nullptr;
    PFNGLBINDBUFFERPROC bindBuffer = nullptr;
    ASSERT_TRUE(korvel::fetchEntryPoint(getBufferParameter, "glGetBufferParameteriv"));
    ASSERT_TRUE(korvel::fetchEntryPoint(bindBuffer, "glBindBuffer"));
    auto usageOf = [&](GLenum target, unsigned buffer) {
        GLint usage = 0;
        bindBuffer(target, buffer);
        getBufferParameter(target, GL_BUFFER_USAGE, &usage);
        bindBuffer(target, 0);
        return usage;
    };

    GLBaseStructure empty;
    EXPECT_TRUE(empty.make(nullptr, 0, nullptr, 0));
    EXPECT_NE(empty.getVertexArrayRaw(), 0u);
    EXPECT_NE(empty.getIndexBufferRaw(), 0u);
    EXPECT_TRUE(isBlack(render(empty), 5, 5));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));

    GLBaseStructure structure;
    fillHalfScreen(structure);
    EXPECT_EQ(usageOf(GL_ARRAY_BUFFER, structure.getVertexBufferRaw()), GL_STATIC_DRAW);
    EXPECT_EQ(usageOf(GL_ELEMENT_ARRAY_BUFFER, structure.getIndexBufferRaw()), GL_STATIC_DRAW);
    // The switch takes effect at the next make, and only for that buffer.
    structure.setIndicesCanChanged();
    EXPECT_EQ(usageOf(GL_ELEMENT_ARRAY_BUFFER, structure.getIndexBufferRaw()), GL_STATIC_DRAW);
    fillHalfScreen(structure);
    EXPECT_EQ(usageOf(GL_ARRAY_BUFFER, structure.getVertexBufferRaw()), GL_STATIC_DRAW);
    EXPECT_EQ(usageOf(GL_ELEMENT_ARRAY_BUFFER, structure.getIndexBufferRaw()), GL_DYNAMIC_DRAW);
    EXPECT_TRUE(isRed(render(structure), 5, 5));

    // clear frees the arrays and every GL object; drawing then does nothing.
    EXPECT_TRUE(structure.clear());
    EXPECT_EQ(structure.getVertices(), nullptr);
    EXPECT_EQ(structure.getVertexArrayRaw(), 0u);
    EXPECT_EQ(structure.getVertexBufferRaw(), 0u);
    EXPECT_TRUE(isBlack(render(structure), 5, 5));
}

}  // namespace
