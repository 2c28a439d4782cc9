#pragma once
// The one place where shader programs are created, found by name and made
// current. The first request for a name loads its GLSL sources from the
// shader directory, through the definition file "shader<name>.gdef" or, when
// that file cannot be opened, from "shaderV<name>.glsl" and
// "shaderF<name>.glsl"; the program is made and kept for the rest of the run.
// A name that failed keeps a null entry, so it is neither retried nor
// reported twice.
//
// The manager's verbosity is Object's verbose flag (setVerbose); it is copied
// into every program it creates and into the definition reader.

#include "core/Object.h"

#include <map>
#include <string>

class ShaderProgram;

namespace korvel {

class ShaderProgramManager : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // The singleton made by ShaderProgramManagerBase::init; null before.
    static ShaderProgramManager* getInstance();
    // Deletes the singleton and its programs; needs the GL context.
    static void releaseInstance();

    ShaderProgramManager();
    ShaderProgramManager(const ShaderProgramManager&) = delete;
    ShaderProgramManager& operator=(const ShaderProgramManager&) = delete;
    ~ShaderProgramManager() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    virtual ShaderProgram* createProgram(std::string name);
    virtual ShaderProgram* instantiateProgram() = 0;

    // Shader directory, with its trailing separator.
    void setPath(std::string directory);
    std::string getPath() const { return path; }

    // The program of that name, made on the first request; null when its
    // sources could not be loaded or made.
    ShaderProgram* getProgram(std::string name);
    // Switches programs only when the argument is not the one made current
    // last. The cache is never cleared, so after an unUse the same program
    // is not bound again through here. A null program is remembered but
    // binds nothing.
    void useProgram(ShaderProgram* program);
    ShaderProgram* getCurrentProgram() const { return current; }
    std::map<std::string, ShaderProgram*>& getPrograms() { return programs; }

    bool loadSource(ShaderProgram* program, std::string name);
    bool loadSourceFromDefinition(ShaderProgram* program, std::string name);
    bool parseShaderDefinition(ShaderProgram* program, std::string text);
    bool loadSourceRaw(ShaderProgram* program, std::string name);

protected:
    static ShaderProgramManager* instance;

    std::string path;
    std::map<std::string, ShaderProgram*> programs;
    ShaderProgram* current;
};

}  // namespace korvel
