// Writes a line of text with a generated font into a PNG picture the way a
// text provider lays it: each character's rectangle copied side by side at
// its pixel size, so that spacing and baseline can be looked at.
//
//   preview-font <font.oft> <picture.png> <text>
#include "parser/Parser.h"
#include "tools/Image.h"

#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>

namespace {

struct Rectangle {
    int x = 0, y = 0, width = 0, height = 0;
};

bool readRectangles(const std::string& path, std::map<int, Rectangle>& out)
{
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    korvel::Parser parser;
    std::ostringstream trace;
    std::streambuf* saved = std::cout.rdbuf(trace.rdbuf());
    const bool parsed = in && parser.parse(text.str());
    std::cout.rdbuf(saved);
    korvel::BaseParserElement* module = parser.getModule();
    if (!parsed || module == nullptr) {
        return false;
    }
    module->startAttributes();
    korvel::BaseParserElement* glyphs = module->getNextAttribute("Glyphs");
    for (korvel::BaseParserElement* g : glyphs == nullptr ? std::vector<korvel::BaseParserElement*>()
                                                          : glyphs->getAttributes()) {
        int32_t v[5] = {0, 0, 0, 0, 0};
        const char* names[5] = {"Code", "X", "Y", "SizeX", "SizeY"};
        for (int i = 0; i < 5; ++i) {
            g->startAttributes();
            g->getNextAttributeValueInt(names[i], v[i]);
        }
        out[v[0]] = Rectangle{v[1], v[2], v[3], v[4]};
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
    std::map<int, Rectangle> rectangles;
    tools::Image atlas(1, 1);
    if (!readRectangles(path, rectangles) || !atlas.load(path.substr(0, path.rfind('.')) + ".png")) {
        std::cerr << "cannot read the font " << path << std::endl;
        return 1;
    }
    const std::string text = argv[3];
    int width = 0;
    int height = 0;
    for (char c : text) {
        const Rectangle& r = rectangles.count(c) != 0 ? rectangles[c] : rectangles['?'];
        width += r.width;
        height = std::max(height, r.height);
    }
    const tools::Colour ground{0.12, 0.18, 0.25, 1.0};
    tools::Image picture(static_cast<unsigned>(width + 16), static_cast<unsigned>(height + 16), ground);
    int pen = 8;
    for (char c : text) {
        const Rectangle& r = rectangles.count(c) != 0 ? rectangles[c] : rectangles['?'];
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
