#include "tools/GlyphTable.h"

#include "parser/Parser.h"

#include <iostream>
#include <sstream>

namespace tools {

bool GlyphTable::read(const std::string& text, std::vector<GlyphRectangle>& out)
{
    korvel::Parser parser;
    std::ostringstream trace;
    std::streambuf* saved = std::cout.rdbuf(trace.rdbuf());
    const bool parsed = parser.parse(text);
    std::cout.rdbuf(saved);
    korvel::BaseParserElement* module = parser.getModule();
    if (!parsed || module == nullptr) {
        return false;
    }
    module->startAttributes();
    korvel::BaseParserElement* glyphs = module->getNextAttribute("Glyphs");
    if (glyphs == nullptr) {
        return false;
    }
    for (korvel::BaseParserElement* g : glyphs->getAttributes()) {
        int32_t v[5] = {0, 0, 0, 0, 0};
        const char* names[5] = {"Code", "X", "Y", "SizeX", "SizeY"};
        for (int i = 0; i < 5; ++i) {
            g->startAttributes();
            g->getNextAttributeValueInt(names[i], v[i]);
        }
        out.push_back({v[0], v[1], v[2], v[3], v[4]});
    }
    return true;
}

}  // namespace tools
