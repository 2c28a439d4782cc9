#pragma once

#include "render/Shader.h"

class ShaderVertex : public Shader {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    ShaderVertex();
    explicit ShaderVertex(std::string source);
    const char* getInstanceClassName() const override { return className; }
};
