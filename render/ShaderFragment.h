#pragma once

#include "render/Shader.h"

class ShaderFragment : public Shader {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    ShaderFragment();
    explicit ShaderFragment(std::string source);
    const char* getInstanceClassName() const override { return className; }
};
