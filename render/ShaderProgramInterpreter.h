#pragma once
// Reads a shader program definition (".gdef") and loads the stages it names
// into a program. The definition holds top-level "vertex" and "fragment"
// elements, each with a "file" attribute relative to the shader directory:
//   <vertex><file>shaderVWood.glsl</file></vertex>
//   <fragment><file>shaderFWood.glsl</file></fragment>
// Other elements are ignored. Sources loaded this way have their #include
// directives expanded from the shader directory.
//
// Its verbosity is Object's verbose flag.

#include "parser/Interpreter.h"

#include <string>
#include <vector>

class Shader;
class ShaderProgram;

namespace korvel {

class BaseParserElement;

class ShaderProgramInterpreter : public Interpreter {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    ShaderProgramInterpreter();

    // Parses the source and loads every stage it names; false when there was
    // nothing to parse or a named stage could not be loaded.
    bool execute() override;
    bool manageAttributes(const std::vector<BaseParserElement*>* elements);
    bool loadShader(Shader* shader, const std::string& fileName);

    void setProgram(ShaderProgram* target) { program = target; }
    ShaderProgram* getProgram() const { return program; }
    // Shader directory, with its trailing separator.
    void setDirectory(const std::string& path) { directory = path; }
    const std::string& getDirectory() const { return directory; }

private:
    bool loadElement(BaseParserElement* element, Shader* stage);

    ShaderProgram* program;
    std::string directory;
};

}  // namespace korvel
