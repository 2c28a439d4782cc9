#pragma once
// A named surface description carried by triangles. Triangles only point at
// materials; whoever made the material (the model loader) owns it.

#include "core/Object.h"

#include <string>

namespace korvel {

class Material : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    Material() = default;
    explicit Material(const std::string& materialName) : name(materialName) {}

    const std::string& getName() const { return name; }
    void setName(const std::string& value) { name = value; }

    std::string name;
};

}  // namespace korvel
