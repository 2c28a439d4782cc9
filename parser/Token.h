#pragma once
// A definition-file element read from text: "<name>" then either a verbatim
// value or child elements separated by white space, then "</name>".

#include "parser/BaseParserElement.h"

namespace korvel {

class Token : public BaseParserElement {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Elements nested deeper than this are refused: reading and deleting a
    // tree recurse once per level, and a hostile file must not be able to
    // exhaust the stack. Real definition files nest a handful of levels.
    static constexpr int maxLevel = 1000;

    Token();
    explicit Token(int level);

    bool extract(const std::string& text, std::size_t& position, bool& ended) override;
    // True when a "<" follows position (ended tells whether it opens an end
    // tag, position then on its "/"); false when none follows or it is the
    // last character.
    bool isEndOfToken(const std::string& text, std::size_t& position, bool& ended);
    // After an element: true when another "<" follows (ended = false) or only
    // white space is left (ended = true); false on anything else.
    bool checkEnd(const std::string& text, std::size_t& position, bool& ended);

    int getLevel() const { return level; }

protected:
    // 1 for a top-level element.
    int level;
};

}  // namespace korvel
