#pragma once
// The program manager of the engine: every program it makes is a
// ShaderProgramBase.

#include "render/ShaderProgramManager.h"

namespace korvel {

class ShaderProgramManagerBase : public ShaderProgramManager {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Creates the singleton unless it exists; always true.
    static bool init();

    const char* getInstanceClassName() const override { return className; }
    ShaderProgram* instantiateProgram() override;
};

}  // namespace korvel
