#pragma once
// The glyph rectangles of a font descriptor (.oft), read with the engine's
// own definition parser, so that what the generator wrote is what the game
// will find.
#include <string>
#include <vector>

namespace tools {

struct GlyphRectangle {
    int code = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

class GlyphTable {
public:
    // False when the text does not parse or holds no "Glyphs" block. The
    // parser's trace of every element is kept off standard output.
    static bool read(const std::string& text, std::vector<GlyphRectangle>& out);
};

}  // namespace tools
