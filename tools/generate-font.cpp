// Writes the game's font "Arial" into a directory: the atlas Arial.png and
// the descriptor Arial.oft, for the printable ASCII codes 32 to 126, drawn
// with FreeType from a freely licensed outline font (DejaVu Sans).
//
// Each glyph's rectangle is its whole advance cell: advance width by
// ascent + descent pixels, the glyph drawn inside at its bearing and on the
// baseline (ascent pixels below the cell's top). A text provider that lays
// rectangles side by side at their pixel sizes thus gets the font's spacing
// and a common baseline. Glyphs are white; their coverage is the alpha.
// Cells are Padding pixels apart, so that filtering never mixes neighbours.
//
//   generate-font <font file> <directory>
#include "tools/GlyphTable.h"
#include "tools/Image.h"
#include "tools/ObjWriter.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <cmath>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr int pixelSize = 48;
constexpr int padding = 4;
constexpr int atlasWidth = 512;
constexpr int firstCode = 32;
constexpr int lastCode = 126;
const char* const fontName = "Arial";

struct Glyph {
    int code = 0;
    int advance = 0;
    int left = 0;
    int top = 0;
    int width = 0;
    int rows = 0;
    std::vector<unsigned char> coverage;
    int x = 0;
    int y = 0;
};

struct Font {
    int ascent = 0;
    int descent = 0;
    int height = 0;
    std::vector<Glyph> glyphs;
};

bool renderGlyphs(const std::string& file, Font& font)
{
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    if (FT_Init_FreeType(&library) != 0) {
        std::cerr << "FreeType does not start" << std::endl;
        return false;
    }
    bool ok = FT_New_Face(library, file.c_str(), 0, &face) == 0 && FT_Set_Pixel_Sizes(face, 0, pixelSize) == 0;
    if (ok) {
        font.ascent = static_cast<int>(std::ceil(face->size->metrics.ascender / 64.0));
        font.descent = static_cast<int>(std::ceil(-face->size->metrics.descender / 64.0));
    }
    for (int code = firstCode; ok && code <= lastCode; ++code) {
        ok = FT_Load_Char(face, static_cast<FT_ULong>(code), FT_LOAD_RENDER) == 0;
        if (!ok) {
            break;
        }
        const FT_GlyphSlot slot = face->glyph;
        Glyph g;
        g.code = code;
        g.advance = static_cast<int>((slot->advance.x + 32) >> 6);
        g.left = slot->bitmap_left;
        g.top = slot->bitmap_top;
        g.width = static_cast<int>(slot->bitmap.width);
        g.rows = static_cast<int>(slot->bitmap.rows);
        for (int r = 0; r < g.rows; ++r) {
            const unsigned char* row = slot->bitmap.buffer + static_cast<std::ptrdiff_t>(r) * slot->bitmap.pitch;
            g.coverage.insert(g.coverage.end(), row, row + g.width);
        }
        font.glyphs.push_back(std::move(g));
    }
    if (!ok) {
        std::cerr << "cannot draw the glyphs of " << file << std::endl;
    }
    if (face != nullptr) {
        FT_Done_Face(face);
    }
    FT_Done_FreeType(library);
    return ok;
}

// Rows of cells, left to right, Padding apart and from the image's edges;
// the image height is the next power of two.
void layOut(Font& font)
{
    const int cellHeight = font.ascent + font.descent;
    int x = padding;
    int y = padding;
    for (Glyph& g : font.glyphs) {
        if (x + g.advance + padding > atlasWidth) {
            x = padding;
            y += cellHeight + padding;
        }
        g.x = x;
        g.y = y;
        x += g.advance + padding;
    }
    const int used = y + cellHeight + padding;
    font.height = 1;
    while (font.height < used) {
        font.height *= 2;
    }
}

// Draws every glyph inside its cell; counts the covered pixels that fell
// outside a cell and were left out, and names their glyphs.
int draw(const Font& font, tools::Image& atlas, std::string& clippedGlyphs)
{
    const int cellHeight = font.ascent + font.descent;
    int clipped = 0;
    for (const Glyph& g : font.glyphs) {
        const int before = clipped;
        for (int r = 0; r < g.rows; ++r) {
            for (int c = 0; c < g.width; ++c) {
                const unsigned char value = g.coverage[static_cast<std::size_t>(r * g.width + c)];
                const int cx = g.left + c;
                const int cy = font.ascent - g.top + r;
                if (cx < 0 || cx >= g.advance || cy < 0 || cy >= cellHeight) {
                    clipped += value > 0 ? 1 : 0;
                    continue;
                }
                atlas.setBytes(static_cast<unsigned>(g.x + cx), static_cast<unsigned>(g.y + cy), 255, 255, 255, value);
            }
        }
        if (clipped > before) {
            clippedGlyphs += static_cast<char>(g.code);
        }
    }
    return clipped;
}

std::string element(const std::string& name, const std::string& value)
{
    return "<" + name + ">" + value + "</" + name + ">";
}

std::string descriptor(const Font& font)
{
    std::ostringstream out;
    out << "<FontDefinition>\n"
        << element("Name", fontName) << "\n"
        << element("Ascent", std::to_string(font.ascent)) << "\n"
        << element("Descent", std::to_string(font.descent)) << "\n"
        << element("Padding", std::to_string(padding)) << "\n"
        << element("ImageWidth", std::to_string(atlasWidth)) << "\n"
        << element("ImageHeight", std::to_string(font.height)) << "\n"
        << "</FontDefinition>\n<Glyphs>\n";
    const int cellHeight = font.ascent + font.descent;
    for (const Glyph& g : font.glyphs) {
        out << "<Glyph>" << element("Code", std::to_string(g.code)) << element("X", std::to_string(g.x))
            << element("Y", std::to_string(g.y)) << element("SizeX", std::to_string(g.advance))
            << element("SizeY", std::to_string(cellHeight)) << "</Glyph>\n";
    }
    out << "</Glyphs>\n";
    return out.str();
}

// Reads the descriptor back with the engine's parser: every printable code
// once, every rectangle inside the atlas.
bool checkDescriptor(const std::string& text, int imageHeight)
{
    std::vector<tools::GlyphRectangle> glyphs;
    if (!tools::GlyphTable::read(text, glyphs)) {
        std::cerr << "the font descriptor does not parse" << std::endl;
        return false;
    }
    std::set<int> codes;
    for (const tools::GlyphRectangle& g : glyphs) {
        if (g.x < 0 || g.y < 0 || g.x + g.width > atlasWidth || g.y + g.height > imageHeight || g.width <= 0) {
            std::cerr << "glyph " << g.code << " lies outside the atlas" << std::endl;
            return false;
        }
        codes.insert(g.code);
    }
    const bool complete = glyphs.size() == static_cast<std::size_t>(lastCode - firstCode + 1) &&
                          codes.size() == glyphs.size() && *codes.begin() == firstCode &&
                          *codes.rbegin() == lastCode;
    if (!complete) {
        std::cerr << "the font descriptor misses printable codes" << std::endl;
    }
    return complete;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: generate-font <font file> <directory>" << std::endl;
        return 2;
    }
    const std::string directory = argv[2];
    Font font;
    if (!renderGlyphs(argv[1], font)) {
        return 1;
    }
    layOut(font);
    tools::Image atlas(atlasWidth, static_cast<unsigned>(font.height), tools::Colour{1.0, 1.0, 1.0, 0.0});
    std::string clippedGlyphs;
    const int clipped = draw(font, atlas, clippedGlyphs);
    const std::string text = descriptor(font);
    if (!checkDescriptor(text, font.height) || !atlas.save(directory + "/" + fontName + ".png") ||
        !tools::writeTextFile(directory + "/" + fontName + ".oft", text)) {
        return 1;
    }
    std::cout << "  " << fontName << ": " << font.glyphs.size() << " glyphs, " << pixelSize << " px, ascent "
              << font.ascent << ", descent " << font.descent << ", atlas " << atlasWidth << "x" << font.height
              << ", " << clipped << " covered pixels outside their cells (" << clippedGlyphs << ")" << std::endl;
    return 0;
}
