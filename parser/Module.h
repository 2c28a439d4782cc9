#pragma once
// Root of a parsed definition file: its children are the file's top-level
// elements, in order. A failed element closes the list, so the tree read
// before an error stays usable.

#include "parser/BaseParserElement.h"

namespace korvel {

class Module : public BaseParserElement {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Module();

    bool extract(const std::string& text, std::size_t& position, bool& ended) override;
};

}  // namespace korvel
