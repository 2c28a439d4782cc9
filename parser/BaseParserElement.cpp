#include "parser/BaseParserElement.h"

#include <iostream>
#include <sstream>

namespace korvel {

const char* BaseParserElement::className = "BaseParserElement";

namespace {

// Formatted extraction: leading white space skipped, trailing characters
// ignored. A failed conversion leaves 0 rather than whatever the stream
// stored (an overflow would otherwise give the type's extreme).
template <typename T>
bool convert(const std::string& text, T& out)
{
    std::istringstream in(text);
    T read = T();
    if (!(in >> read)) {
        out = T();
        return false;
    }
    out = read;
    return true;
}

}  // namespace

BaseParserElement::BaseParserElement() : name("ERRORTAG"), cursor(noCursor) {}

BaseParserElement::~BaseParserElement()
{
    releaseAttributes();
}

void BaseParserElement::dump() const
{
    if (value.empty()) {
        std::cout << "<" << name << ">" << std::endl;
    } else {
        std::cout << "<" << name << ">" << value << std::endl;
    }
    for (const BaseParserElement* child : children) {
        child->dump();
    }
    std::cout << "</" << name << ">" << std::endl;
}

void BaseParserElement::startAttributes()
{
    cursor = children.empty() ? noCursor : 0;
}

BaseParserElement* BaseParserElement::getNextAttribute(const std::string& wanted)
{
    while (cursor < children.size()) {
        BaseParserElement* child = children[cursor];
        ++cursor;
        if (child->name == wanted) {
            return child;
        }
    }
    cursor = noCursor;
    return nullptr;
}

std::string* BaseParserElement::getNextAttributeValue(const std::string& wanted)
{
    BaseParserElement* child = getNextAttribute(wanted);
    return child == nullptr ? nullptr : &child->value;
}

bool BaseParserElement::getNextAttributeValueString(const std::string& wanted, std::string& out)
{
    const std::string* found = getNextAttributeValue(wanted);
    if (found == nullptr) {
        return false;
    }
    out = *found;
    return true;
}

bool BaseParserElement::getNextAttributeValueInt(const std::string& wanted, int32_t& out)
{
    const std::string* found = getNextAttributeValue(wanted);
    return found != nullptr && convert(*found, out);
}

bool BaseParserElement::getNextAttributeValueFloat(const std::string& wanted, float& out)
{
    const std::string* found = getNextAttributeValue(wanted);
    return found != nullptr && convert(*found, out);
}

bool BaseParserElement::getNextAttributeValueDouble(const std::string& wanted, double& out)
{
    const std::string* found = getNextAttributeValue(wanted);
    return found != nullptr && convert(*found, out);
}

void BaseParserElement::releaseAttributes()
{
    for (BaseParserElement* child : children) {
        delete child;
    }
    children.clear();
    cursor = noCursor;
}

void BaseParserElement::addAttribute(BaseParserElement* child)
{
    if (child != nullptr) {
        children.push_back(child);
    }
}

}  // namespace korvel
