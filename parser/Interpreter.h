#pragma once
// Base of the readers that load one definition file and act on its tree.
// Subclasses override execute() to parse and then walk
// getParser()->getModule().

#include "core/Object.h"
#include "parser/Parser.h"

#include <string>

namespace korvel {

class Interpreter : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Interpreter();
    ~Interpreter() override;
    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;

    // A file name wins over a source set directly.
    void setFileName(const std::string& name) { fileName = name; }
    void setSource(const std::string& text) { source = text; }
    const std::string& getFileName() const { return fileName; }
    const std::string& getSource() const { return source; }

    // False, without a message and without a parser, when there is nothing
    // to parse (no source, or a file that is missing or empty).
    virtual bool parse();
    virtual bool execute();
    void releaseParser();
    Parser* getParser() const { return parser; }

protected:
    std::string fileName;
    std::string source;
    Parser* parser;
};

}  // namespace korvel
