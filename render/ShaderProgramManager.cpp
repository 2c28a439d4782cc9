#include "render/ShaderProgramManager.h"

#include "parser/TextFile.h"
#include "render/ShaderFragment.h"
#include "render/ShaderProgram.h"
#include "render/ShaderProgramInterpreter.h"
#include "render/ShaderVertex.h"

#include <iostream>
#include <utility>

namespace korvel {

const char* ShaderProgramManager::className = "ShaderProgramManager";
ShaderProgramManager* ShaderProgramManager::instance = nullptr;

ShaderProgramManager* ShaderProgramManager::getInstance()
{
    return instance;
}

void ShaderProgramManager::releaseInstance()
{
    delete instance;
    instance = nullptr;
}

ShaderProgramManager::ShaderProgramManager() : current(nullptr) {}

ShaderProgramManager::~ShaderProgramManager()
{
    for (auto& [name, program] : programs) {
        delete program;
    }
    programs.clear();
    if (instance == this) {
        instance = nullptr;
    }
}

void ShaderProgramManager::dump() const
{
    std::cout << "path: " << path << std::endl;
    std::cout << "isVerbose: " << verbose << std::endl;
    for (const auto& [name, program] : programs) {
        std::cout << "code Shader: " << name << std::endl;
        std::cout << "Shader: " << std::endl;
        if (program != nullptr) {
            program->dump();
        }
    }
}

void ShaderProgramManager::setPath(std::string directory)
{
    path = std::move(directory);
}

ShaderProgram* ShaderProgramManager::getProgram(std::string name)
{
    const auto found = programs.find(name);
    if (found != programs.end()) {
        return found->second;
    }
    ShaderProgram* program = createProgram(name);
    programs[name] = program;
    return program;
}

ShaderProgram* ShaderProgramManager::createProgram(std::string name)
{
    if (verbose) {
        std::cout << "[Information] creating program for " << name << std::endl;
    }
    ShaderProgram* program = instantiateProgram();
    if (program == nullptr) {
        return nullptr;
    }
    program->isVerbose = verbose;
    program->codeName = name;
    program->setVertexOwned(new ShaderVertex());
    program->setFragmentOwned(new ShaderFragment());
    if (!loadSource(program, name)) {
        delete program;
        std::cout << "[ERROR] Shader program not loadable !" << std::endl;
        return nullptr;
    }
    if (!program->make()) {
        delete program;
        std::cout << "[ERROR] Shader program not makable !" << std::endl;
        return nullptr;
    }
    return program;
}

void ShaderProgramManager::useProgram(ShaderProgram* program)
{
    if (program == current) {
        return;
    }
    current = program;
    if (program != nullptr) {
        program->use();
    }
}

bool ShaderProgramManager::loadSource(ShaderProgram* program, std::string name)
{
    if (loadSourceFromDefinition(program, name)) {
        return true;
    }
    // A definition that failed half-way may have filled a stage already;
    // the raw files start from empty stages.
    if (program->getVertex() != nullptr) {
        program->getVertex()->getSource().clear();
    }
    if (program->getFragment() != nullptr) {
        program->getFragment()->getSource().clear();
    }
    return loadSourceRaw(program, name);
}

bool ShaderProgramManager::loadSourceFromDefinition(ShaderProgram* program, std::string name)
{
    const std::string file = path + "shader" + name + ".gdef";
    if (verbose) {
        std::cout << "[Information] file for definition source: " << file << std::endl;
    }
    std::string text;
    if (!readTextLines(file, text)) {
        std::cout << "[Warning] unable to open shader definition file" << std::endl;
        return false;
    }
    return parseShaderDefinition(program, text);
}

bool ShaderProgramManager::parseShaderDefinition(ShaderProgram* program, std::string text)
{
    ShaderProgramInterpreter interpreter;
    interpreter.setDirectory(path);
    interpreter.setSource(std::move(text));
    interpreter.setProgram(program);
    interpreter.setVerbose(verbose);
    return interpreter.execute();
}

bool ShaderProgramManager::loadSourceRaw(ShaderProgram* program, std::string name)
{
    ShaderVertex* vertex = program->getVertex();
    ShaderFragment* fragment = program->getFragment();
    if (vertex == nullptr || fragment == nullptr) {
        return false;
    }
    const std::string vertexFile = path + "shaderV" + name + ".glsl";
    const std::string fragmentFile = path + "shaderF" + name + ".glsl";
    if (verbose) {
        std::cout << "[Information] vertex name " << vertexFile << std::endl;
        std::cout << "[Information] fragment name " << fragmentFile << std::endl;
    }
    vertex->setFileName(vertexFile);
    if (!vertex->read()) {
        return false;
    }
    if (verbose) {
        std::cout << "[Information] Vertex shader source read" << std::endl;
    }
    fragment->setFileName(fragmentFile);
    if (!fragment->read()) {
        return false;
    }
    if (verbose) {
        std::cout << "[Information] Fragment shader source read" << std::endl;
    }
    return true;
}

}  // namespace korvel
