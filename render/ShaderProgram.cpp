#include "render/ShaderProgram.h"

#include "render/GLEntryPoint.h"
#include "render/OpenGLError.h"
#include "render/ShaderFragment.h"
#include "render/ShaderVertex.h"

#include <iostream>

namespace {

PFNGLCREATEPROGRAMPROC pglCreateProgram = nullptr;
PFNGLATTACHSHADERPROC pglAttachShader = nullptr;
PFNGLDETACHSHADERPROC pglDetachShader = nullptr;
PFNGLLINKPROGRAMPROC pglLinkProgram = nullptr;
PFNGLUSEPROGRAMPROC pglUseProgram = nullptr;
PFNGLGETPROGRAMIVPROC pglGetProgramiv = nullptr;
PFNGLDELETEPROGRAMPROC pglDeleteProgram = nullptr;
PFNGLGETUNIFORMLOCATIONPROC pglGetUniformLocation = nullptr;
PFNGLUNIFORMMATRIX4FVPROC pglUniformMatrix4fv = nullptr;
PFNGLGETATTRIBLOCATIONPROC pglGetAttribLocation = nullptr;
PFNGLUNIFORM1IPROC pglUniform1i = nullptr;
PFNGLUNIFORM1FPROC pglUniform1f = nullptr;
PFNGLUNIFORM3FVPROC pglUniform3fv = nullptr;
PFNGLUNIFORM4FVPROC pglUniform4fv = nullptr;
PFNGLBINDATTRIBLOCATIONPROC pglBindAttribLocation = nullptr;
bool entryPointsReady = false;

}  // namespace

const char* ShaderProgram::className = "ShaderProgram";

bool ShaderProgram::init()
{
    using korvel::fetchEntryPoint;
    entryPointsReady = fetchEntryPoint(pglCreateProgram, "glCreateProgram")
        && fetchEntryPoint(pglAttachShader, "glAttachShader")
        && fetchEntryPoint(pglDetachShader, "glDetachShader")
        && fetchEntryPoint(pglLinkProgram, "glLinkProgram")
        && fetchEntryPoint(pglUseProgram, "glUseProgram")
        && fetchEntryPoint(pglGetProgramiv, "glGetProgramiv")
        && fetchEntryPoint(pglDeleteProgram, "glDeleteProgram")
        && fetchEntryPoint(pglGetUniformLocation, "glGetUniformLocation")
        && fetchEntryPoint(pglUniformMatrix4fv, "glUniformMatrix4fv")
        && fetchEntryPoint(pglGetAttribLocation, "glGetAttribLocation")
        && fetchEntryPoint(pglUniform1i, "glUniform1i")
        && fetchEntryPoint(pglUniform1f, "glUniform1f")
        && fetchEntryPoint(pglUniform3fv, "glUniform3fv")
        && fetchEntryPoint(pglUniform4fv, "glUniform4fv")
        && fetchEntryPoint(pglBindAttribLocation, "glBindAttribLocation");
    return entryPointsReady;
}

ShaderProgram::ShaderProgram()
    : isVerbose(false), program(0), vertexOwned(true), vertex(nullptr), fragmentOwned(true), fragment(nullptr)
{
}

bool ShaderProgram::bindAttributes()
{
    return false;
}

bool ShaderProgram::checkAttributeBinding()
{
    return true;
}

ShaderProgram::~ShaderProgram()
{
    if (pglUseProgram != nullptr) {
        pglUseProgram(0);
    }
    if (vertex != nullptr && vertexOwned) {
        releaseVertex();
    }
    if (fragment != nullptr && fragmentOwned) {
        releaseFragment();
    }
    if (program != 0 && pglDeleteProgram != nullptr) {
        pglDeleteProgram(program);
    }
}

void ShaderProgram::dump()
{
    std::cout << "program: " << program << std::endl;
    std::cout << "codeName: " << codeName << std::endl;
}

void ShaderProgram::detach(unsigned shader)
{
    if (program != 0 && shader != 0 && pglDetachShader != nullptr) {
        pglDetachShader(program, shader);
    }
}

// An owned stage is detached and deleted before it is replaced; a linked one
// is forgotten and stays its owner's.
void ShaderProgram::dropVertex()
{
    if (vertex != nullptr && vertexOwned) {
        releaseVertex();
    }
}

void ShaderProgram::dropFragment()
{
    if (fragment != nullptr && fragmentOwned) {
        releaseFragment();
    }
}

void ShaderProgram::setVertexOwned(ShaderVertex* stage)
{
    if (stage != vertex) {
        dropVertex();
    }
    vertex = stage;
    vertexOwned = true;
}

void ShaderProgram::setFragmentOwned(ShaderFragment* stage)
{
    if (stage != fragment) {
        dropFragment();
    }
    fragment = stage;
    fragmentOwned = true;
}

void ShaderProgram::setVertex(ShaderVertex* stage)
{
    if (stage != vertex) {
        dropVertex();
    }
    vertex = stage;
    vertexOwned = false;
}

void ShaderProgram::setFragment(ShaderFragment* stage)
{
    if (stage != fragment) {
        dropFragment();
    }
    fragment = stage;
    fragmentOwned = false;
}

void ShaderProgram::releaseVertex()
{
    if (vertex != nullptr) {
        detach(vertex->getShaderRaw());
        delete vertex;
        vertex = nullptr;
    }
}

void ShaderProgram::releaseFragment()
{
    if (fragment != nullptr) {
        detach(fragment->getShaderRaw());
        delete fragment;
        fragment = nullptr;
    }
}

bool ShaderProgram::make()
{
    if (vertex == nullptr) {
        std::cout << "[Error] failed to use vertices shader" << std::endl;
        return false;
    }
    if (fragment == nullptr) {
        std::cout << "[Error] failed to use fragment shader" << std::endl;
        return false;
    }
    if (!vertex->make()) {
        std::cout << "[Error] failed to make vertices shader" << std::endl;
        return false;
    }
    if (!fragment->make()) {
        std::cout << "[Error] failed to make fragment shader" << std::endl;
        return false;
    }
    if (!entryPointsReady) {
        return false;
    }
    // A second make replaces the earlier program object instead of leaking it.
    if (program != 0) {
        pglDeleteProgram(program);
    }
    program = pglCreateProgram();
    if (program == 0) {
        return false;
    }
    pglAttachShader(program, vertex->getShaderRaw());
    pglAttachShader(program, fragment->getShaderRaw());
    // Attribute locations only take effect at the next link.
    if (!bindAttributes()) {
        return false;
    }
    pglLinkProgram(program);
    GLint status = 0;
    pglGetProgramiv(program, GL_LINK_STATUS, &status);
    if (status != 1) {
        std::cout << "[Error] failed to link shader program" << std::endl;
        OpenGLError error;
        error.setProgram(program);
        error.dump();
        return false;
    }
    if (!bindUniforms()) {
        return false;
    }
    return checkAttributeBinding();
}

void ShaderProgram::use()
{
    if (pglUseProgram != nullptr) {
        pglUseProgram(program);
    }
}

void ShaderProgram::unUse()
{
    if (pglUseProgram != nullptr) {
        pglUseProgram(0);
    }
}

int ShaderProgram::getUniformLocation(const char* name)
{
    if (pglGetUniformLocation == nullptr || program == 0) {
        return -1;
    }
    return pglGetUniformLocation(program, name);
}

int ShaderProgram::getAttribLocation(const char* name)
{
    if (pglGetAttribLocation == nullptr || program == 0) {
        return -1;
    }
    return pglGetAttribLocation(program, name);
}

void ShaderProgram::bindAttribLocation(unsigned index, const char* name)
{
    if (pglBindAttribLocation != nullptr && program != 0) {
        pglBindAttribLocation(program, index, name);
    }
}

void ShaderProgram::uniformMatrix4fv(int location, int count, unsigned char transpose, const float* values)
{
    if (pglUniformMatrix4fv != nullptr) {
        pglUniformMatrix4fv(location, count, transpose, values);
    }
}

void ShaderProgram::uniform1f(int location, float value)
{
    if (pglUniform1f != nullptr) {
        pglUniform1f(location, value);
    }
}

void ShaderProgram::uniform1i(int location, int value)
{
    if (pglUniform1i != nullptr) {
        pglUniform1i(location, value);
    }
}

void ShaderProgram::uniform3fv(int location, int count, const float* values)
{
    if (pglUniform3fv != nullptr) {
        pglUniform3fv(location, count, values);
    }
}

void ShaderProgram::uniform4fv(int location, int count, const float* values)
{
    if (pglUniform4fv != nullptr) {
        pglUniform4fv(location, count, values);
    }
}
