#include "render/Shader.h"

#include "parser/TextFile.h"
#include "render/GLEntryPoint.h"
#include "render/OpenGLError.h"

#include <iostream>
#include <utility>

namespace {

PFNGLCREATESHADERPROC pglCreateShader = nullptr;
PFNGLSHADERSOURCEPROC pglShaderSource = nullptr;
PFNGLCOMPILESHADERPROC pglCompileShader = nullptr;
PFNGLGETSHADERIVPROC pglGetShaderiv = nullptr;
PFNGLDELETESHADERPROC pglDeleteShader = nullptr;
bool entryPointsReady = false;

}  // namespace

const char* Shader::className = "Shader";

bool Shader::init()
{
    using korvel::fetchEntryPoint;
    entryPointsReady = fetchEntryPoint(pglCreateShader, "glCreateShader")
        && fetchEntryPoint(pglShaderSource, "glShaderSource")
        && fetchEntryPoint(pglCompileShader, "glCompileShader")
        && fetchEntryPoint(pglGetShaderiv, "glGetShaderiv")
        && fetchEntryPoint(pglDeleteShader, "glDeleteShader");
    return entryPointsReady;
}

Shader::Shader() : handle(0), type(0) {}

Shader::Shader(std::string text) : handle(0), type(0)
{
    setSource(std::move(text));
}

Shader::~Shader()
{
    releaseHandle();
}

void Shader::releaseHandle()
{
    if (handle != 0 && pglDeleteShader != nullptr) {
        pglDeleteShader(handle);
    }
    handle = 0;
}

void Shader::setSource(std::string text)
{
    source = std::move(text);
    std::cout << "[information] Source shader: " << source << std::endl;
}

void Shader::setFileName(std::string name)
{
    fileName = std::move(name);
}

bool Shader::read()
{
    // Lines come back with text-mode line ends, each followed by "\n".
    std::string text;
    if (!korvel::readTextLines(fileName, text)) {
        std::cout << "[ERROR] unable to open source file" << std::endl;
        return false;
    }
    source += text;
    return true;
}

bool Shader::make()
{
    if (!entryPointsReady) {
        std::cout << "[ERROR] failed to create shader" << std::endl;
        return false;
    }
    // A second make replaces the earlier object instead of leaking it.
    releaseHandle();
    handle = pglCreateShader(type);
    if (handle == 0) {
        std::cout << "[ERROR] failed to create shader" << std::endl;
    }
    const char* text = source.c_str();
    pglShaderSource(handle, 1, &text, nullptr);
    pglCompileShader(handle);
    GLint status = 0;
    pglGetShaderiv(handle, GL_COMPILE_STATUS, &status);
    if (status == 1) {
        return true;
    }
    std::cout << "[ERROR] Failed to compile " << (type == GL_FRAGMENT_SHADER ? "fragment" : "vertex") << " shader"
              << std::endl;
    OpenGLError error;
    error.setShader(handle);
    error.dump();
    return false;
}
