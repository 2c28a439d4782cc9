#pragma once
// Turns a definition-file text into an element tree under a Module. The tree
// is kept even when parse answers false: it holds what was read before the
// error, followed by the element that failed.

#include "core/Object.h"
#include "parser/Module.h"

#include <string>

namespace korvel {

class Parser : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Parser();
    ~Parser() override;
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // A second parse with the same parser appends to the module it holds.
    bool parse(const std::string& text);
    Module* getModule() const { return module; }
    // Hands the module to the caller, who deletes it; the parser forgets it.
    Module* detachModule();
    void releaseModule();
    void dump() const override;

private:
    Module* module;
};

}  // namespace korvel
