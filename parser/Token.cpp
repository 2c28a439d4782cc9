#include "parser/Token.h"

#include <iostream>

namespace korvel {

const char* Token::className = "Token";

namespace {

// Tab, line feed and blank only: carriage returns are gone by the time a
// file's text gets here.
bool isWhite(char c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

// Position of the first character that is not white space in [from, to),
// or to when there is none.
std::size_t firstNotWhite(const std::string& text, std::size_t from, std::size_t to)
{
    while (from < to && isWhite(text[from])) {
        ++from;
    }
    return from;
}

// The next "<" from position that has a character after it.
bool findOpening(const std::string& text, std::size_t from, std::size_t& found)
{
    found = text.find('<', from);
    return found != std::string::npos && found + 1 < text.size();
}

}  // namespace

Token::Token() : level(1) {}

Token::Token(int depth) : level(depth) {}

bool Token::extract(const std::string& text, std::size_t& position, bool& ended)
{
    const std::size_t open = text.find('<', position);
    if (open == std::string::npos) {
        return false;
    }
    const std::size_t offending = firstNotWhite(text, position, open);
    if (offending != open) {
        std::cout << "[ERROR] Token char not expected in starting definition: " << text[offending] << std::endl;
        return false;
    }
    const std::size_t close = text.find('>', open + 1);
    if (close == std::string::npos) {
        position = open;
        return false;
    }
    name.assign(text, open + 1, close - open - 1);
    position = close + 1;
    const std::size_t afterStartTag = position;
    // Written for every element, whatever the verbose switch says.
    std::cout << "[Information] tag being parsed: " << name << std::endl;
    if (level > maxLevel) {
        std::cout << "[ERROR] Token nested deeper than " << maxLevel << " levels: " << name << std::endl;
        return false;
    }

    std::size_t next = 0;
    if (!findOpening(text, position, next)) {
        return false;
    }
    if (text[next + 1] == '/') {
        value.assign(text, position, next - position);
    } else {
        do {
            Token* child = new Token(level + 1);
            if (!child->extract(text, position, ended)) {
                ended = true;
                children.push_back(child);
                return false;
            }
            children.push_back(child);
            if (!findOpening(text, position, next)) {
                return false;
            }
        } while (text[next + 1] != '/');
    }
    position = next + 1;

    const std::size_t endClose = text.find('>', position);
    if (endClose == std::string::npos) {
        position = afterStartTag;
        return false;
    }
    // Compared byte for byte before copying: the end name is only needed for
    // the message.
    const std::size_t endLength = endClose - position - 1;
    const bool same = text.compare(position + 1, endLength, name) == 0;
    if (!same) {
        std::cout << "[ERROR] end name is wrong: " << text.substr(position + 1, endLength) << std::endl;
        position = endClose + 1;
        return false;
    }
    position = endClose + 1;
    return checkEnd(text, position, ended);
}

bool Token::isEndOfToken(const std::string& text, std::size_t& position, bool& ended)
{
    std::size_t next = 0;
    if (!findOpening(text, position, next)) {
        return false;
    }
    if (text[next + 1] == '/') {
        ended = true;
        position = next + 1;
    } else {
        ended = false;
    }
    return true;
}

bool Token::checkEnd(const std::string& text, std::size_t& position, bool& ended)
{
    if (position < text.size() && text.find('<', position) != std::string::npos) {
        ended = false;
        return true;
    }
    const std::size_t offending = firstNotWhite(text, position, text.size());
    if (offending >= text.size()) {
        ended = true;
        return true;
    }
    std::cout << "[ERROR] Token char not expected in ending : " << text[offending] << std::endl;
    return false;
}

}  // namespace korvel
