#include "render/ShaderFragment.h"

#include "render/GLEntryPoint.h"

#include <utility>

const char* ShaderFragment::className = "ShaderFragment";

ShaderFragment::ShaderFragment() : Shader()
{
    type = GL_FRAGMENT_SHADER;
}

ShaderFragment::ShaderFragment(std::string text) : Shader(std::move(text))
{
    type = GL_FRAGMENT_SHADER;
}
