#include "scene/Clone3D.h"

#include "geometry/Shape.h"
#include "scene/IModel3D.h"
#include "scene/ShapeIndexed3D.h"

#include <cstring>
#include <iostream>

namespace korvel {

const char* Clone3D::className = "Clone3D";

Clone3D::Clone3D() : mother(nullptr) {}

Clone3D::Clone3D(const Clone3D& other) : IClone3D(other), mother(nullptr)
{
    setMother(other.mother);
}

void Clone3D::dump() const
{
    IObject3D::dump();
    std::cout << "Mother: " << mother << std::endl;
}

void Clone3D::setModel(IModel3D* value)
{
    IClone3D::setModel(value);
    IObject3D* object = value != nullptr ? value->getObject(lod) : nullptr;
    const char* kind = object != nullptr ? object->getInstanceClassName() : "";
    if (std::strcmp(kind, Shape3D::getClassName()) == 0 || std::strcmp(kind, ShapeIndexed3D::getClassName()) == 0) {
        setMother(static_cast<Shape3D*>(object));
    } else {
        setMother(nullptr);
    }
}

void Clone3D::setMother(Shape3D* value)
{
    mother = value;
    motherName.clear();
    if (mother == nullptr) {
        shareStructure(nullptr);
        return;
    }
    setLocalLimits(mother->getLocalMin(), mother->getLocalMax());
    if (shaderProgram == nullptr) {
        setShaderProgram(mother->getShaderProgram());
    }
    if (texture == nullptr) {
        setTexture(mother->getTexture());
    }
    shareStructure(mother->getStructure());
}

bool Clone3D::make()
{
    made = true;
    return true;
}

bool Clone3D::getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit)
{
    return mother != nullptr && Shape3D::intersectPlaced(mother->getShape(), matrixObject, origin, direction, hit);
}

void Clone3D::updateLimits()
{
    if (mother != nullptr) {
        localMin = mother->getLocalMin();
        localMax = mother->getLocalMax();
    }
    computeWorldLimits();
}

bool Clone3D::getMinPointY(Vector4D& p) const
{
    return mother != nullptr && mother->getMinPointY(p);
}

}  // namespace korvel
