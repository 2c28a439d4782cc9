#pragma once
// The material of the model files: a diffuse texture and the shader program
// that draws the objects wearing it. Both are linked, never owned: they belong
// to their managers.

#include "geometry/Material.h"

class ShaderProgramBase;

namespace korvel {

class Texture;

class MaterialBase : public Material {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    MaterialBase() = default;
    explicit MaterialBase(const std::string& materialName) : Material(materialName) {}

    Texture* texture = nullptr;
    // Room for a second texture (a normal or detail map); nothing fills it
    // yet, so it stays null.
    Texture* textureSecond = nullptr;
    ShaderProgramBase* shaderProgram = nullptr;
};

}  // namespace korvel
