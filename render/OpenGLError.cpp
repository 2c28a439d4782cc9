#include "render/OpenGLError.h"

#include "render/GLEntryPoint.h"

#include <iostream>
#include <vector>

namespace {

PFNGLGETSHADERINFOLOGPROC pglGetShaderInfoLog = nullptr;
PFNGLGETPROGRAMINFOLOGPROC pglGetProgramInfoLog = nullptr;
constexpr GLsizei infoLogSize = 8192;

}  // namespace

const char* OpenGLError::className = "OpenGLError";

bool OpenGLError::init()
{
    using korvel::fetchEntryPoint;
    return fetchEntryPoint(pglGetShaderInfoLog, "glGetShaderInfoLog")
        && fetchEntryPoint(pglGetProgramInfoLog, "glGetProgramInfoLog");
}

void OpenGLError::dump() const
{
    std::vector<GLchar> buffer(infoLogSize, '\0');
    if (program != 0 && pglGetProgramInfoLog != nullptr) {
        buffer[0] = '\0';
        pglGetProgramInfoLog(program, infoLogSize, nullptr, buffer.data());
        buffer.back() = '\0';
        std::cout << "[ERROR] OPENGL ERROR type Program: " << buffer.data() << std::endl;
    }
    if (shader != 0 && pglGetShaderInfoLog != nullptr) {
        buffer[0] = '\0';
        pglGetShaderInfoLog(shader, infoLogSize, nullptr, buffer.data());
        buffer.back() = '\0';
        std::cout << "[ERROR] OPENGL ERROR type shader: " << buffer.data() << std::endl;
    }
}
