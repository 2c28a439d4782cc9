// Text layout: cells side by side at the font's scale, left to right, line
// after line downwards, each quad sampling its glyph's rectangle the right
// way up, and the fallbacks for codes without a glyph.

#include "support/CaptureStdout.h"

#include "geometry/Shape.h"
#include "geometry/TriangleTextured.h"
#include "render/TextFont.h"
#include "render/TextProvider.h"
#include "render/TextSign.h"
#include "render/TextureManager.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Lines of 8 pixels (ascent 6, descent 2) in a 64 x 32 atlas: 'A' is 4
// pixels wide, 'B' 8, '?' 2 and the blank 3.
const char* const tinyFont =
    "<FontDefinition><Name>TinyLayout</Name><Ascent>6</Ascent><Descent>2</Descent><Padding>1</Padding>"
    "<ImageWidth>64</ImageWidth><ImageHeight>32</ImageHeight></FontDefinition>\n<Glyphs>\n"
    "<Glyph><Code>65</Code><X>0</X><Y>0</Y><SizeX>4</SizeX><SizeY>8</SizeY></Glyph>\n"
    "<Glyph><Code>66</Code><X>8</X><Y>16</Y><SizeX>8</SizeX><SizeY>8</SizeY></Glyph>\n"
    "<Glyph><Code>63</Code><X>20</X><Y>0</Y><SizeX>2</SizeX><SizeY>8</SizeY></Glyph>\n"
    "<Glyph><Code>32</Code><X>30</X><Y>0</Y><SizeX>3</SizeX><SizeY>8</SizeY></Glyph>\n"
    "</Glyphs>\n";

// One laid-out character: its box in the text's frame and its rectangle
// in the atlas.
struct Quad {
    float x0, y0, x1, y1;
    float u0, v0, u1, v1;
};

class TextProviderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const fs::path directory = fs::path(scratchDirectory("render_textprovider_test"));
        fs::create_directories(directory);
        std::ofstream((directory / "tiny.oft").string()) << tinyFont;
        korvel::TextureManager::getInstance()->setPath((directory / "no-images/").string());
        CaptureStdout quiet;
        font.importOFT((directory / "tiny").string());  // no atlas: layout does not need it
        ASSERT_EQ(font.getSigns().size(), 4u) << quiet.text();
    }

    // The quads of text, checked triangle by triangle: both triangles of a
    // quad face +z and every corner carries the texture coordinates of its
    // place in the cell (u to the right, v downwards).
    std::vector<Quad> quads(const std::string& text)
    {
        korvel::Shape shape;
        const std::size_t count = provider.layout(text, shape);
        EXPECT_EQ(shape.getTriangleCount(), count * 2);
        std::vector<Quad> result;
        const auto& triangles = shape.getTriangles();
        for (auto t = triangles.begin(); t != triangles.end(); std::advance(t, 2)) {
            const korvel::Triangle* pair[2] = {*t, *std::next(t)};
            Quad q{1e9f, 1e9f, -1e9f, -1e9f, 1e9f, 1e9f, -1e9f, -1e9f};
            for (const korvel::Triangle* triangle : pair) {
                EXPECT_GT(triangle->getNormal().z, 0.0f);
                const auto* textured = dynamic_cast<const korvel::TriangleTextured*>(triangle);
                EXPECT_NE(textured, nullptr);
                for (int k = 0; k < 3; ++k) {
                    q.x0 = std::min(q.x0, textured->points[k]->x);
                    q.x1 = std::max(q.x1, textured->points[k]->x);
                    q.y0 = std::min(q.y0, textured->points[k]->y);
                    q.y1 = std::max(q.y1, textured->points[k]->y);
                    q.u0 = std::min(q.u0, textured->mapCoords[k]->x);
                    q.u1 = std::max(q.u1, textured->mapCoords[k]->x);
                    q.v0 = std::min(q.v0, textured->mapCoords[k]->y);
                    q.v1 = std::max(q.v1, textured->mapCoords[k]->y);
                }
            }
            for (const korvel::Triangle* triangle : pair) {
                const auto* textured = static_cast<const korvel::TriangleTextured*>(triangle);
                for (int k = 0; k < 3; ++k) {
                    const bool right = textured->points[k]->x > (q.x0 + q.x1) / 2;
                    const bool top = textured->points[k]->y > (q.y0 + q.y1) / 2;
                    EXPECT_EQ(textured->mapCoords[k]->x, right ? q.u1 : q.u0);
                    EXPECT_EQ(textured->mapCoords[k]->y, top ? q.v0 : q.v1);
                }
            }
            result.push_back(q);
        }
        return result;
    }

    korvel::TextFont font;
    korvel::TextProvider provider{&font, 2.0f};  // 8 pixels a line: 0.25 a pixel
};

// Descent 2 pixels below the baseline, ascent 6 above.
void expectQuad(const Quad& q, float x0, float x1, float baseline, const korvel::TextSign& sign)
{
    const float got[] = {q.x0, q.x1, q.y0, q.y1, q.u0, q.u1, q.v0, q.v1};
    const float wanted[] = {x0, x1, baseline - 0.5f, baseline + 1.5f,
                            sign.getLeftU(), sign.getRightU(), sign.getTopV(), sign.getBottomV()};
    for (int i = 0; i < 8; ++i) {
        EXPECT_FLOAT_EQ(got[i], wanted[i]) << i;
    }
}

TEST_F(TextProviderTest, CellsFollowEachOtherLeftToRightAndLineAfterLine)
{
    const korvel::TextSign& a = *font.getSign('A');
    const korvel::TextSign& b = *font.getSign('B');
    std::vector<Quad> laid = quads("AB");
    ASSERT_EQ(laid.size(), 2u);
    expectQuad(laid[0], 0.0f, 1.0f, 0.0f, a);
    expectQuad(laid[1], 1.0f, 3.0f, 0.0f, b);
    EXPECT_FLOAT_EQ(provider.measure("AB"), 3.0f);

    laid = quads("BA\nA B");
    ASSERT_EQ(laid.size(), 5u);
    expectQuad(laid[2], 0.0f, 1.0f, -2.0f, a);
    expectQuad(laid[4], 1.75f, 3.75f, -2.0f, b);  // after the blank's 0.75
    EXPECT_FLOAT_EQ(provider.measure("BA\nA B"), 3.75f);

    provider.setAlignment(korvel::TextProvider::Alignment::centre);
    laid = quads("AB\nA");
    expectQuad(laid[0], -1.5f, -0.5f, 0.0f, a);
    expectQuad(laid[2], -0.5f, 0.5f, -2.0f, a);
    provider.setAlignment(korvel::TextProvider::Alignment::right);
    expectQuad(quads("AB")[1], -2.0f, 0.0f, 0.0f, b);

    EXPECT_TRUE(quads("").empty());
    EXPECT_FLOAT_EQ(provider.measure(""), 0.0f);
}

TEST_F(TextProviderTest, CodesWithoutGlyphFallBack)
{
    EXPECT_EQ(provider.findSign('C'), font.getSign('?'));
    std::vector<Quad> laid = quads("CA");
    ASSERT_EQ(laid.size(), 2u);
    expectQuad(laid[0], 0.0f, 0.5f, 0.0f, *font.getSign('?'));
    expectQuad(laid[1], 0.5f, 1.5f, 0.0f, *font.getSign('A'));

    // A fallback without a glyph gives way to the blank.
    provider.setFallbackCode('Z');
    EXPECT_EQ(provider.findSign('C'), font.getSign(' '));
    EXPECT_FLOAT_EQ(provider.measure("C"), 0.75f);

    // Neither: a gap of half a line, nothing drawn.
    korvel::TextFont empty;
    korvel::TextProvider bare(&empty, 2.0f);
    korvel::Shape shape;
    EXPECT_EQ(bare.findSign('A'), nullptr);
    EXPECT_EQ(bare.layout("AB", shape), 0u);
    EXPECT_FLOAT_EQ(bare.measure("AB"), 2.0f);

    korvel::TextProvider none;
    EXPECT_EQ(none.layout("AB", shape), 0u);
    CaptureStdout out;
    EXPECT_EQ(none.createMessage("AB"), nullptr);
    EXPECT_EQ(out.text(), "[ERROR] TextProvider has no font to write with\n");
}

}  // namespace
