#include "render/ShaderProgramManagerBase.h"

#include "render/ShaderProgramBase.h"

namespace korvel {

const char* ShaderProgramManagerBase::className = "ShaderProgramManagerBase";

bool ShaderProgramManagerBase::init()
{
    if (instance == nullptr) {
        instance = new ShaderProgramManagerBase();
    }
    return true;
}

ShaderProgram* ShaderProgramManagerBase::instantiateProgram()
{
    return new ShaderProgramBase();
}

}  // namespace korvel
