// Font descriptors: the messages of every faulty file, the glyph rectangles,
// the replacement of a sign, and the shipped font. No GL here: the atlas
// lookup fails cleanly (no image in the texture directory), which is the
// last step, so every glyph has been read by then.

#include "support/CaptureStdout.h"

#include "parser/Token.h"
#include "render/TextFont.h"
#include "render/TextSign.h"
#include "render/TextureManager.h"
#include "support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path directory = fs::path(scratchDirectory("render_textfont_test"));
const fs::path shipped = (fs::path(KORVEL_TEST_DATA) / "../../../data/").lexically_normal();

std::string writeFont(const std::string& name, const std::string& text)
{
    fs::create_directories(directory);
    std::ofstream((directory / (name + ".oft")).string(), std::ios::binary) << text;
    return (directory / name).string();
}

std::string definition(const std::string& inside)
{
    return "<FontDefinition>" + inside + "</FontDefinition>\n";
}

const std::string goodDefinition = definition(
    "<Name>Tiny</Name><Ascent>6</Ascent><Descent>2</Descent><Padding>1</Padding>"
    "<ImageWidth>64</ImageWidth><ImageHeight>32</ImageHeight>");

std::string glyphs(const std::string& inside)
{
    return "<Glyphs>\n" + inside + "</Glyphs>\n";
}

std::string glyph(const std::string& inside)
{
    return "<Glyph>" + inside + "</Glyph>\n";
}

// The lines of text that start with "[" (parser traces left out).
std::vector<std::string> messages(const std::string& text)
{
    std::vector<std::string> lines;
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t end = text.find('\n', begin);
        const std::string line = text.substr(begin, end - begin);
        if (line.rfind("[Information] tag being parsed: ", 0) != 0) {
            lines.push_back(line);
        }
        begin = end == std::string::npos ? text.size() : end + 1;
    }
    return lines;
}

bool contains(const std::vector<std::string>& lines, const std::vector<std::string>& wanted)
{
    auto from = lines.begin();
    for (const std::string& w : wanted) {
        from = std::find(from, lines.end(), w);
        if (from == lines.end()) {
            return false;
        }
        ++from;
    }
    return true;
}

class TextFontTest : public ::testing::Test {
protected:
    void SetUp() override { korvel::TextureManager::getInstance()->setPath((directory / "no-images/").string()); }
};

TEST_F(TextFontTest, FaultyDescriptorsSayWhatIsWrongAndFail)
{
    const std::string code = "<Code>65</Code>";
    const std::string all = code + "<X>1</X><Y>2</Y><SizeX>3</SizeX><SizeY>4</SizeY>";
    const std::string badGlyph = "[Error] Glyph is ill defined";
    const std::string badBlock = "[ERROR] Font Glyphs block is ill formed";
    const std::string badDefinition = "[ERROR] font definition is illed-formed";
    const std::string minusAttribute = "<Name>Tiny</Name><Ascent>6</Ascent><Descent>2</Descent><Padding>1</Padding>";
    struct Case {
        const char* name;
        std::string text;
        std::vector<std::string> lines;
    };
    const std::vector<Case> cases = {
        {"empty", "", {"[ERROR] font descriptor is empty"}},
        {"binary", std::string("\x89PNG\r\n\x1a\n\0\0<\xff>", 14), {"[ERROR] font descriptor for OFT is illed-formed"}},
        {"truncated", goodDefinition + "<Glyphs><Glyph><Code>65</Co", {"[ERROR] font descriptor for OFT is illed-formed"}},
        {"nodefinition", glyphs(glyph(all)), {"[ERROR] font definition is missing in descriptor"}},
        {"noname", definition("<Ascent>6</Ascent>"), {"[ERROR] Font Name not defined !", badDefinition}},
        {"noascent", definition("<Name>Tiny</Name>"), {"[ERROR] Font ascent not defined !", badDefinition}},
        {"nodescent", definition("<Name>Tiny</Name><Ascent>6</Ascent>"),
         {"[ERROR] Font descent not defined !", badDefinition}},
        {"nopadding", definition("<Name>Tiny</Name><Ascent>6</Ascent><Descent>2</Descent>"),
         {"[ERROR] Font padding not defined !", badDefinition}},
        {"nowidth", definition(minusAttribute), {"[ERROR] Font ImageWidth not defined !", badDefinition}},
        {"noheight", definition(minusAttribute + "<ImageWidth>64</ImageWidth>"),
         {"[ERROR] Font ImageHeight not defined !", badDefinition}},
        {"negativeheight", definition(minusAttribute + "<ImageWidth>64</ImageWidth><ImageHeight>-3</ImageHeight>"),
         {"[ERROR] Font image size must be positive, width: 64 / height: -3", badDefinition}},
        {"noglyphs", goodDefinition, {"[ERROR] Font Glyphs block is missing"}},
        {"nocode", goodDefinition + glyphs(glyph("<X>1</X>")), {"[ERROR] Glyph Code not defined !", badGlyph, badBlock}},
        {"bigcode", goodDefinition + glyphs(glyph("<Code>300</Code>")),
         {"[ERROR] Glyph Code out of byte range: 300", badGlyph, badBlock}},
        {"nox", goodDefinition + glyphs(glyph(code + "<Y>2</Y>")), {"[ERROR] Glyph X not defined !", badGlyph, badBlock}},
        {"nosizex", goodDefinition + glyphs(glyph(code + "<X>1</X><Y>2</Y><SizeY>4</SizeY>")),
         {"[ERROR] Glyph SizeX not defined !", badGlyph, badBlock}},
        {"nosizey", goodDefinition + glyphs(glyph(code + "<X>1</X><Y>2</Y><SizeX>3</SizeX>")),
         {"[ERROR] Glyph SizeY not defined !", badGlyph, badBlock}},
        {"huge", goodDefinition + glyphs(std::string(korvel::TextFont::maxDescriptorSize, ' ')),
         {"[ERROR] font descriptor larger than 1048576 bytes: " + (directory / "huge.oft").string()}},
        // Everything read; only the atlas is missing.
        {"noimage", goodDefinition + glyphs(glyph(all)),
         {"[ERROR] Font Texture not found:Tiny.png", "[ERROR] Texture not included"}},
    };
    for (const Case& c : cases) {
        const std::string name = writeFont(c.name, c.text);
        korvel::TextFont font;
        CaptureStdout out;
        EXPECT_FALSE(font.importOFT(name)) << c.name;
        const std::vector<std::string> lines = messages(out.text());
        ASSERT_FALSE(lines.empty()) << c.name;
        EXPECT_EQ(lines.front(), "[Information] Attempting to open font descriptor: " + name + ".oft") << c.name;
        EXPECT_TRUE(contains(lines, c.lines)) << c.name << "\n" << out.text();
        EXPECT_EQ(lines.back(), c.lines.back()) << c.name;
    }
    korvel::TextFont font;
    CaptureStdout out;
    EXPECT_FALSE(font.importOFT((directory / "absent").string()));
    EXPECT_EQ(messages(out.text()).back(), "[ERROR] font descriptor not found");
}

TEST_F(TextFontTest, GlyphRectanglesAreThePixelsOverTheImageSize)
{
    // Two glyphs for 'A': the second one counts. CRLF line ends read as LF.
    const std::string text = goodDefinition +
        glyphs(glyph("<Code>65</Code><X>8</X><Y>4</Y><SizeX>16</SizeX><SizeY>8</SizeY>") +
               glyph("<Code>66</Code><X>0</X><Y>0</Y><SizeX>4</SizeX><SizeY>8</SizeY>") +
               glyph("<Code>65</Code><X>32</X><Y>16</Y><SizeX>8</SizeX><SizeY>16</SizeY>") +
               glyph("<Code>-23</Code><X>60</X><Y>0</Y><SizeX>8</SizeX><SizeY>8</SizeY>"));
    std::string crlf;
    for (char c : text) {
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    }
    korvel::TextFont font;
    CaptureStdout out;
    EXPECT_FALSE(font.importOFT(writeFont("twice", crlf)));  // no atlas
    ASSERT_EQ(font.getSigns().size(), 3u);
    const korvel::TextSign* a = font.getSign('A');
    ASSERT_NE(a, nullptr);
    // Row 0 is v = 0: not flipped. Pixels over a power of two stay exact.
    EXPECT_EQ(std::vector<float>({a->getLeftU(), a->getTopV(), a->getRightU(), a->getBottomV()}),
              std::vector<float>({32.0f / 64.0f, 16.0f / 32.0f, 40.0f / 64.0f, 32.0f / 32.0f}));
    // A negative code is the same byte as its unsigned reading; its glyph
    // reaches past the image's right edge, which is said and kept.
    ASSERT_NE(font.getSign(233), nullptr);
    EXPECT_FLOAT_EQ(font.getSign(233)->getRightU(), 68.0f / 64.0f);
    EXPECT_TRUE(contains(messages(out.text()), {"[Warning] Glyph rectangle empty or outside the font image, code: -23"}));
    EXPECT_EQ(out.text().find("[Warning] Glyph rectangle empty or outside the font image, code: 65"), std::string::npos);
}

TEST_F(TextFontTest, ReplacedSignsStayValidAndGoWithTheFont)
{
    const std::size_t before = Object::countInstances();
    {
        korvel::TextFont font;
        auto* first = new korvel::TextSign();
        first->setCode('x');
        auto* second = new korvel::TextSign();
        second->setCode('x');
        font.addSign(first);
        font.addSign(nullptr);
        font.addSign(second);
        font.addSign(second);
        EXPECT_EQ(font.getSign('x'), second);
        first->setRectangle(0.1f, 0.2f, 0.3f, 0.4f);  // still alive
        EXPECT_EQ(font.getSigns().size(), 1u);
        EXPECT_EQ(Object::countInstances(), before + 3);
        font.releaseSigns();
        EXPECT_EQ(Object::countInstances(), before + 1);
        EXPECT_EQ(font.getSign('x'), nullptr);
    }
    EXPECT_EQ(Object::countInstances(), before);
}

TEST_F(TextFontTest, ShippedFontHasEveryPrintableCodeInsideItsAtlas)
{
    korvel::TextFont font;
    CaptureStdout out;
    font.importOFT((shipped / "Arial").string());  // the atlas is the GL test's business
    ASSERT_TRUE(contains(messages(out.text()), {"[ERROR] Font Texture not found:Arial.png"})) << out.text();
    EXPECT_GT(font.getAscent() + font.getDescent(), 0);
    for (int code = 32; code <= 126; ++code) {
        const korvel::TextSign* sign = font.getSign(static_cast<unsigned char>(code));
        ASSERT_NE(sign, nullptr) << code;
        EXPECT_EQ(sign->getCode(), static_cast<signed char>(code));
        EXPECT_TRUE(0.0f <= sign->getLeftU() && sign->getLeftU() < sign->getRightU() && sign->getRightU() <= 1.0f)
            << code;
        EXPECT_TRUE(0.0f <= sign->getTopV() && sign->getTopV() < sign->getBottomV() && sign->getBottomV() <= 1.0f)
            << code;
        // Every cell is one line high, so text keeps one baseline.
        EXPECT_NEAR((sign->getBottomV() - sign->getTopV()) * static_cast<float>(font.getImageHeight()),
                    static_cast<float>(font.getAscent() + font.getDescent()), 1e-3f) << code;
    }
    EXPECT_EQ(out.text().find("[Warning]"), std::string::npos);
}

}  // namespace
