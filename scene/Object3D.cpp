#include "scene/Object3D.h"

#include "render/GLBaseStructure.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "render/Texture.h"

#include <GL/gl.h>

#include <iostream>
#include <string>

namespace korvel {

const char* Object3D::className = "Object3D";

namespace {

void useProgram(ShaderProgramBase* program)
{
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    if (manager != nullptr) {
        manager->useProgram(program);
    } else if (program != nullptr) {
        program->use();
    }
}

}  // namespace

Object3D::Object3D()
    : drawBothFaces(false),
      structure(new GLBaseStructure()),
      structureOwned(true),
      shaderProgram(nullptr),
      texture(nullptr),
      age(0.0f)
{
}

Object3D::Object3D(const Object3D& other)
    : IObject3D(other),
      drawBothFaces(other.drawBothFaces),
      structure(new GLBaseStructure()),
      structureOwned(true),
      shaderProgram(other.shaderProgram),
      texture(other.texture),
      age(other.age)
{
    structure->setShaderProgram(shaderProgram);
}

Object3D::~Object3D()
{
    releaseStructure();
}

bool Object3D::load(std::istream& in)
{
    const bool result = IObject3D::load(in);
    std::string programName;
    in >> programName;
    ShaderProgramManager* manager = ShaderProgramManager::getInstance();
    ShaderProgram* found = (manager != nullptr && !programName.empty()) ? manager->getProgram(programName) : nullptr;
    auto* program = dynamic_cast<ShaderProgramBase*>(found);
    setShaderProgram(program);
    if (program == nullptr) {
        std::cout << "[Error] ShaderType not found in Object3D" << std::endl;
        return false;
    }
    return result;
}

bool Object3D::save(std::ostream& out)
{
    const bool result = IObject3D::save(out);
    // A word always stands here so that load stays in step; "-" names no
    // program, and loading it reports the missing program.
    out << (shaderProgram != nullptr && !shaderProgram->codeName.empty() ? shaderProgram->codeName : "-") << '\n';
    return result;
}

bool Object3D::make()
{
    useProgram(shaderProgram);
    made = true;
    return true;
}

void Object3D::draw()
{
    if (!visible || shaderProgram == nullptr) {
        return;
    }
    useProgram(shaderProgram);
    prepareDrawMatrix();
    if (structure == nullptr) {
        return;
    }
    if (texture != nullptr) {
        shaderProgram->setTextureSampler(0);
        texture->activateDraw();
    }
    shaderProgram->setTimeElapse(age);
    if (drawBothFaces) {
        glDisable(GL_CULL_FACE);
    }
    structure->draw();
    if (drawBothFaces) {
        glEnable(GL_CULL_FACE);
    }
}

void Object3D::setAge(float value)
{
    age = value;
}

void Object3D::prepareDrawMatrix()
{
    if (shaderProgram != nullptr) {
        shaderProgram->setMatrixObject(matrixObject);
    }
}

void Object3D::setShaderProgram(ShaderProgramBase* program)
{
    shaderProgram = program;
    if (structure != nullptr && structureOwned) {
        structure->setShaderProgram(program);
    }
}

void Object3D::setTexture(Texture* value)
{
    texture = value;
}

void Object3D::releaseStructure()
{
    if (structureOwned) {
        delete structure;
    }
    structure = nullptr;
    structureOwned = true;
}

void Object3D::shareStructure(GLBaseStructure* shared)
{
    if (structure == shared) {
        return;
    }
    releaseStructure();
    structure = shared;
    structureOwned = false;
}

}  // namespace korvel
