// Writes a line of text with a generated font into a PNG picture the way a
// text provider lays it: each character's rectangle copied side by side at
// its pixel size, so that spacing and baseline can be looked at.
//
//   preview-font <font.oft> <picture.png> <text>
#include "tools/GlyphTable.h"
#include "tools/Image.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool readRectangles(const std::string& path, std::map<int, tools::GlyphRectangle>& out)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    std::vector<tools::GlyphRectangle> glyphs;
    if (!in || !tools::GlyphTable::read(text.str(), glyphs)) {
        return false;
    }
    for (const tools::GlyphRectangle& g : glyphs) {
        out[g.code] = g;
    }
    return !out.empty();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: preview-font <font.oft> <picture.png> <text>" << std::endl;
        return 2;
    }
    const std::string path = argv[1];
    std::map<int, tools::GlyphRectangle> rectangles;
    tools::Image atlas(1, 1);
    if (!readRectangles(path, rectangles) || !atlas.load(path.substr(0, path.rfind('.')) + ".png")) {
        std::cerr << "cannot read the font " << path << std::endl;
        return 1;
    }
    const std::string text = argv[3];
    int width = 0;
    int height = 0;
    for (char c : text) {
        const tools::GlyphRectangle& r = rectangles.count(c) != 0 ? rectangles[c] : rectangles['?'];
        width += r.width;
        height = std::max(height, r.height);
    }
    const tools::Colour ground{0.12, 0.18, 0.25, 1.0};
    tools::Image picture(static_cast<unsigned>(width + 16), static_cast<unsigned>(height + 16), ground);
    int pen = 8;
    for (char c : text) {
        const tools::GlyphRectangle& r = rectangles.count(c) != 0 ? rectangles[c] : rectangles['?'];
        for (int y = 0; y < r.height; ++y) {
            for (int x = 0; x < r.width; ++x) {
                const tools::Colour g = atlas.get(static_cast<unsigned>(r.x + x), static_cast<unsigned>(r.y + y));
                const double a = g.alpha;
                picture.set(static_cast<unsigned>(pen + x), static_cast<unsigned>(8 + y),
                            {ground.red * (1 - a) + g.red * a, ground.green * (1 - a) + g.green * a,
                             ground.blue * (1 - a) + g.blue * a, 1.0});
            }
        }
        pen += r.width;
    }
    return picture.save(argv[2]) ? 0 : 1;
}
