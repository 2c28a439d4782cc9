#include "support/GLContextFixture.h"
#include "support/CaptureStdout.h"

#include "render/TextureBase.h"
#include "render/TextureManager.h"
#include "support/ScratchDirectory.h"

#include <lodepng.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

const std::string directory = scratchDirectory("render_texture_test");

class TextureGLTest : public GLContextFixture {};

// A width x height RGBA image whose every byte tells its position.
std::vector<unsigned char> pattern(unsigned width, unsigned height)
{
    std::vector<unsigned char> pixels(width * height * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<unsigned char>(i * 7 + 3);
    }
    return pixels;
}

std::string writePng(const std::string& name, unsigned width, unsigned height)
{
    const std::string file = directory + name + ".png";
    EXPECT_EQ(lodepng::encode(file, pattern(width, height), width, height), 0u);
    return file;
}

std::string writeText(const std::string& name)
{
    const std::string file = directory + name + ".png";
    std::ofstream(file) << "not a picture\n";
    return file;
}

TEST_F(TextureGLTest, PngComesBackAsTheSameTexture)
{
    // Neither side a power of two: uploaded as it is.
    const std::string file = writePng("odd", 3, 5);
    korvel::TextureBase texture;
    CaptureStdout out;
    ASSERT_TRUE(texture.load(file));
    EXPECT_EQ(texture.getWidth(), 3u);
    EXPECT_EQ(texture.getHeight(), 5u);
    EXPECT_EQ(out.text(), "[Information] image" + file + " loaded and decodded\n[Information] texture ID:"
                              + std::to_string(texture.getName()) + "\n");

    glBindTexture(GL_TEXTURE_2D, 0);
    texture.activateDraw();
    GLint size[4] = {};
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &size[0]);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &size[1]);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 1, GL_TEXTURE_WIDTH, &size[2]);  // mipmaps were made
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 1, GL_TEXTURE_HEIGHT, &size[3]);
    EXPECT_EQ(std::vector<GLint>(size, size + 4), (std::vector<GLint>{3, 5, 1, 2}));
    // Rows as decoded, first row first.
    std::vector<unsigned char> uploaded(3 * 5 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, uploaded.data());
    EXPECT_EQ(uploaded, pattern(3, 5));
}

TEST_F(TextureGLTest, ADecoderErrorIsReportedOnceAndTheManagerRemembersIt)
{
    const std::string broken = writeText("broken");
    std::vector<unsigned char> ignored;
    unsigned size = 0;
    const unsigned error = lodepng::decode(ignored, size, size, broken);
    ASSERT_NE(error, 0u);
    const std::string decoderLine =
        "[ERROR] decoder error " + std::to_string(error) + ": " + lodepng_error_text(error) + "\n";
    korvel::TextureBase texture;
    CaptureStdout out;
    EXPECT_FALSE(texture.load(broken));
    EXPECT_EQ(out.text(), decoderLine);
    EXPECT_EQ(texture.getName(), 0u);

    writePng("square", 4, 4);
    korvel::TextureManager manager;
    manager.setPath(directory);
    out.clear();
    korvel::TextureBase* square = manager.getTexture("square");
    ASSERT_NE(square, nullptr);
    EXPECT_EQ(manager.getTexture("broken"), nullptr);
    const std::string text = out.text();
    EXPECT_NE(text.find(decoderLine + "[ERROR] Texture not loaded:broken\n[ERROR] filename information:" + directory
                        + "broken.png\n"),
              std::string::npos)
        << text;
    // Neither decoded nor reported a second time.
    out.clear();
    EXPECT_EQ(manager.getTexture("square"), square);
    EXPECT_EQ(manager.getTexture("broken"), nullptr);
    EXPECT_EQ(out.text(), "");
}

}  // namespace
