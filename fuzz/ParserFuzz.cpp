// Feeds arbitrary bytes to the definition-file parser. Besides crashes and
// sanitizer reports it checks that every top-level element of a successful
// parse dumps into text that parses again to the same names.

#include "parser/Parser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Swallows the trace lines, which would otherwise dominate the run time.
class NullBuffer : public std::streambuf {
protected:
    int overflow(int c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

std::vector<std::string> childNames(const korvel::BaseParserElement& element)
{
    std::vector<std::string> names;
    for (const korvel::BaseParserElement* child : element.getAttributes()) {
        names.push_back(child->getName());
    }
    return names;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static NullBuffer null;
    std::streambuf* old = std::cout.rdbuf(&null);

    const std::string text(reinterpret_cast<const char*>(data), size);
    korvel::Parser parser;
    const bool result = parser.parse(text);
    korvel::Module* module = parser.getModule();
    if (module == nullptr || module->getAttributes().empty()) {
        std::abort();
    }
    if (result) {
        for (const korvel::BaseParserElement* element : module->getAttributes()) {
            std::ostringstream dumped;
            std::cout.rdbuf(dumped.rdbuf());
            element->dump();
            std::cout.rdbuf(&null);
            korvel::Parser again;
            if (!again.parse(dumped.str()) || again.getModule()->getAttributes().size() != 1) {
                std::abort();
            }
            const korvel::BaseParserElement* copy = again.getModule()->getAttributes()[0];
            if (copy->getName() != element->getName() || childNames(*copy) != childNames(*element)) {
                std::abort();
            }
        }
    }

    std::cout.rdbuf(old);
    return 0;
}
