#include "parser/Module.h"

#include "parser/Token.h"

namespace korvel {

const char* Module::className = "Module";

Module::Module()
{
    name = "__module";
}

bool Module::extract(const std::string& text, std::size_t& position, bool& ended)
{
    if (ended) {
        return true;
    }
    for (;;) {
        Token* token = new Token(1);
        if (token->extract(text, position, ended)) {
            children.push_back(token);
            if (ended) {
                return true;
            }
        } else {
            // The failed element closes the list, so callers see where
            // reading stopped (as "ERRORTAG" when no start tag was read).
            ended = true;
            children.push_back(token);
            return false;
        }
    }
}

}  // namespace korvel
