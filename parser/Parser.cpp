#include "parser/Parser.h"

namespace korvel {

const char* Parser::className = "Parser";

Parser::Parser() : module(nullptr) {}

Parser::~Parser()
{
    releaseModule();
}

bool Parser::parse(const std::string& text)
{
    if (module == nullptr) {
        module = new Module();
    }
    std::size_t position = 0;
    bool ended = false;
    return module->extract(text, position, ended);
}

Module* Parser::detachModule()
{
    Module* held = module;
    module = nullptr;
    return held;
}

void Parser::releaseModule()
{
    delete module;
    module = nullptr;
}

void Parser::dump() const
{
    if (module != nullptr) {
        module->dump();
    }
}

}  // namespace korvel
