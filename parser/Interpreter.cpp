#include "parser/Interpreter.h"

#include "parser/TextFile.h"

namespace korvel {

const char* Interpreter::className = "Interpreter";

Interpreter::Interpreter() : parser(nullptr) {}

Interpreter::~Interpreter()
{
    releaseParser();
}

bool Interpreter::parse()
{
    releaseParser();
    if (!fileName.empty()) {
        source.clear();
        // A missing file is not reported here: it simply leaves nothing to
        // parse, and the caller decides what that means.
        readTextLines(fileName, source);
    }
    if (source.empty()) {
        return false;
    }
    parser = new Parser();
    return parser->parse(source);
}

bool Interpreter::execute()
{
    return parse();
}

void Interpreter::releaseParser()
{
    delete parser;
    parser = nullptr;
}

}  // namespace korvel
