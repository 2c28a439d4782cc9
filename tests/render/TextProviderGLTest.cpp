// The shipped font with its atlas, and a message drawn with it through the
// game's "Text" program: the pixels read back are the glyph's, the right way
// round.

#include "support/CaptureStdout.h"
#include "support/GLContextFixture.h"

#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "render/TextFont.h"
#include "render/TextProvider.h"
#include "render/TextSign.h"
#include "render/TextureBase.h"
#include "render/TextureManager.h"
#include "scene/Shape3D.h"

#include <lodepng.h>

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const std::string shipped = (fs::path(KORVEL_TEST_DATA) / "../../../data/").lexically_normal().string();

class TextProviderGLTest : public GLContextFixture {
protected:
    void SetUp() override
    {
        GLContextFixture::SetUp();
        korvel::TextureManager::getInstance()->setPath(shipped);
    }
};

TEST_F(TextProviderGLTest, ShippedFontLoadsAndAMessageDrawsItsGlyphPixels)
{
    ASSERT_TRUE(korvel::ShaderProgramManagerBase::init());
    korvel::ShaderProgramManager* manager = korvel::ShaderProgramManager::getInstance();
    manager->setPath(shipped + "Shaders/");
    CaptureStdout quiet;
    auto* program = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Text"));
    ASSERT_NE(program, nullptr) << quiet.text();
    // The shipped font comes with its atlas.
    korvel::TextFont font;
    quiet.clear();
    ASSERT_TRUE(font.importOFT(shipped + "Arial")) << quiet.text();
    ASSERT_NE(font.getTexture(), nullptr);
    EXPECT_EQ(quiet.text().find("[ERROR]"), std::string::npos) << quiet.text();
    EXPECT_EQ(quiet.text().find("[Warning]"), std::string::npos) << quiet.text();
    font.setShaderProgram(program);

    // One line fills the window's height: in normalised device units (all
    // matrices identity) the cell of 'F' spans y -1..1 and starts at x = -1.
    korvel::TextProvider provider(&font, 2.0f);
    std::unique_ptr<korvel::Shape3D> message(provider.createMessage("F"));
    ASSERT_NE(message, nullptr) << quiet.text();
    EXPECT_EQ(message->getElementKind(), korvel::IObject3D::kindBlended);
    const float perPixel = 2.0f / static_cast<float>(font.getAscent() + font.getDescent());
    message->getMatrixObjectChange()->setPosition(-1.0f, -1.0f + perPixel * static_cast<float>(font.getDescent()), 0.0f);
    message->changeMatrixObject();

    manager->useProgram(program);
    Matrix4D identity = Matrix4D::getI4();
    Vector4D camera(0.0f, 0.0f, 10.0f, 1.0f);  // in front: the text is not seen from behind
    Vector4D black(0.0f, 0.0f, 0.0f, 1.0f);
    program->setMatrixProjection(&identity);
    program->setMatrixView(&identity);
    program->setCamera(&camera);
    program->setFogColor(&black);
    program->setFogStart(10.0f);
    program->setFogEnd(100.0f);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    message->draw();
    glDisable(GL_BLEND);
    glFinish();
    std::vector<unsigned char> window(64 * 64 * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, 64, 64, GL_RGBA, GL_UNSIGNED_BYTE, window.data());

    // What each window pixel should show: the atlas alpha (white glyphs)
    // at the pixel's centre, filtered linearly as the texture is, the cell's
    // top row at the window's top.
    std::vector<unsigned char> atlas;
    unsigned atlasWidth = 0;
    unsigned atlasHeight = 0;
    ASSERT_EQ(lodepng::decode(atlas, atlasWidth, atlasHeight, shipped + "Arial.png"), 0u);
    const auto alpha = [&](int x, int y) {
        return static_cast<float>(atlas[(static_cast<std::size_t>(y) * atlasWidth + static_cast<std::size_t>(x)) * 4 + 3]);
    };
    const auto filtered = [&](float u, float v) {
        const float s = u * static_cast<float>(atlasWidth) - 0.5f;
        const float t = v * static_cast<float>(atlasHeight) - 0.5f;
        const int x = static_cast<int>(std::floor(s));
        const int y = static_cast<int>(std::floor(t));
        const float a = s - static_cast<float>(x);
        const float b = t - static_cast<float>(y);
        return (1 - a) * (1 - b) * alpha(x, y) + a * (1 - b) * alpha(x + 1, y) + (1 - a) * b * alpha(x, y + 1)
            + a * b * alpha(x + 1, y + 1);
    };
    const korvel::TextSign& f = *font.getSign('F');
    const float cellWidth = (f.getRightU() - f.getLeftU()) * static_cast<float>(atlasWidth) * perPixel;
    int lit = 0;
    int wrong = 0;
    int outside = 0;
    for (int row = 0; row < 64; ++row) {
        for (int column = 0; column < 64; ++column) {
            const float red = window[static_cast<std::size_t>(row * 64 + column) * 4];
            const float across = (static_cast<float>(column) + 0.5f) / 32.0f / cellWidth;
            const float up = (static_cast<float>(row) + 0.5f) / 64.0f;
            if (across >= 1.0f) {
                outside += red > 0 ? 1 : 0;
                continue;
            }
            const float expected = filtered(f.getLeftU() + across * (f.getRightU() - f.getLeftU()),
                                            f.getBottomV() - up * (f.getBottomV() - f.getTopV()));
            lit += expected >= 128 ? 1 : 0;
            wrong += std::fabs(expected - red) > 24 ? 1 : 0;
        }
    }
    // The read-back matches the filtered atlas within llvmpipe's rounding of
    // the filter weights and of the blend (a few units); a glyph drawn
    // upside down, mirrored, shifted by a pixel or from another cell is off
    // by a full stroke's contrast in hundreds of pixels.
    EXPECT_GT(lit, 300);
    EXPECT_EQ(wrong, 0) << "of " << lit << " lit pixels";
    EXPECT_EQ(outside, 0);
    message.reset();
    korvel::ShaderProgramManager::releaseInstance();
}

}  // namespace
