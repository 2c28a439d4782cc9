#include "render/ShaderVertex.h"

#include "render/GLEntryPoint.h"

#include <utility>

const char* ShaderVertex::className = "ShaderVertex";

ShaderVertex::ShaderVertex() : Shader()
{
    type = GL_VERTEX_SHADER;
}

ShaderVertex::ShaderVertex(std::string text) : Shader(std::move(text))
{
    type = GL_VERTEX_SHADER;
}
