#pragma once
// One element of a definition file: a tag name with either a text value or an
// ordered list of child elements (the query interface calls them attributes,
// since the language has no attribute syntax of its own).
//
// The element owns its children. Queries walk the children from a cursor that
// only moves forward: successive calls for one name give successive
// same-named children, and a lookup of another name goes on from where the
// last one stopped, so independent lookups begin with startAttributes().
// Main thread only.

#include "core/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace korvel {

class BaseParserElement : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    BaseParserElement();
    ~BaseParserElement() override;
    // Children are owned; copying a tree is not something the engine does.
    BaseParserElement(const BaseParserElement&) = delete;
    BaseParserElement& operator=(const BaseParserElement&) = delete;

    // Reads this element from text at position. ended is set once nothing but
    // white space can follow. False on malformed text; position is left where
    // the error was seen.
    virtual bool extract(const std::string& text, std::size_t& position, bool& ended) = 0;

    // Writes the element back in its own syntax, so a dump parses again.
    void dump() const override;

    void startAttributes();
    BaseParserElement* getNextAttribute(const std::string& name);
    std::string* getNextAttributeValue(const std::string& name);
    // Missing child: false and out untouched. Numbers are read by stream
    // extraction (leading white space skipped, trailing text ignored); an
    // unconvertible or out-of-range value gives false and out = 0.
    bool getNextAttributeValueString(const std::string& name, std::string& out);
    bool getNextAttributeValueInt(const std::string& name, int32_t& out);
    bool getNextAttributeValueFloat(const std::string& name, float& out);
    bool getNextAttributeValueDouble(const std::string& name, double& out);
    void releaseAttributes();

    const std::string& getName() const { return name; }
    void setName(const std::string& newName) { name = newName; }
    const std::string& getValue() const { return value; }
    void setValue(const std::string& newValue) { value = newValue; }
    const std::vector<BaseParserElement*>& getAttributes() const { return children; }
    // Takes ownership; a null element is ignored.
    void addAttribute(BaseParserElement* child);

protected:
    std::string name;
    std::string value;
    std::vector<BaseParserElement*> children;
    // Index of the next child a query examines; noCursor once the children
    // have been walked, so that children added later are not picked up.
    std::size_t cursor;
    static constexpr std::size_t noCursor = static_cast<std::size_t>(-1);
};

}  // namespace korvel
