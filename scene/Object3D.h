#pragma once
// A scene object that draws itself: a shader program and a texture (both
// linked, they belong to their managers) and its geometry on the graphics
// card in one GLBaseStructure.
//
// The structure is normally the object's own (created empty here, deleted
// with the object). A clone draws the buffers of the model it copies: it
// shares that structure without owning it (shareStructure).
//
// An object without a program draws nothing: its matrix could not be
// uploaded anywhere.

#include "scene/IObject3D.h"

class GLBaseStructure;
struct GPattern;
class ShaderProgramBase;

namespace korvel {

class Texture;

class Object3D : public IObject3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    Object3D();
    // Same program, texture, age and face setting, with an empty structure of
    // its own: GPU data are never shared by a copy.
    Object3D(const Object3D& other);
    ~Object3D() override;

    const char* getInstanceClassName() const override { return className; }
    // The IObject3D part, then the program's name on its own line.
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;
    bool isSerializable() override { return true; }

    // Makes the program current; subclasses build their geometry first.
    bool make() override;
    void draw() override;
    void setAge(float value) override;

    // Uploads the object matrix to the program's "refObject".
    virtual void prepareDrawMatrix();
    virtual void setShaderProgram(ShaderProgramBase* program);
    virtual void setTexture(Texture* value);

    void releaseStructure();

    ShaderProgramBase* getShaderProgram() const { return shaderProgram; }
    Texture* getTexture() const { return texture; }
    float getAge() const { return age; }
    GLBaseStructure* getStructure() const { return structure; }
    bool isStructureOwned() const { return structureOwned; }

    // Seen from inside or from both sides: face culling is off around its draw.
    bool drawBothFaces;

protected:
    // Draws another object's buffers from now on, without owning them; the
    // structure held so far is deleted when owned. Null draws nothing.
    void shareStructure(GLBaseStructure* shared);

    GLBaseStructure* structure;
    bool structureOwned;
    ShaderProgramBase* shaderProgram;
    Texture* texture;
    float age;
};

}  // namespace korvel
