#include "scene/CompoundClone3D.h"

#include "scene/CompoundShallow3D.h"
#include "scene/IModel3D.h"

#include <cstring>
#include <list>

namespace korvel {

const char* CompoundClone3D::className = "CompoundClone3D";

CompoundClone3D::CompoundClone3D() : shallow(new CompoundShallow3D())
{
    follow();
}

CompoundClone3D::CompoundClone3D(const CompoundClone3D& other) : IClone3D(other), shallow(new CompoundShallow3D())
{
    setModel(other.model);
}

CompoundClone3D::~CompoundClone3D()
{
    delete shallow;
}

void CompoundClone3D::dump() const
{
    IObject3D::dump();
    shallow->dump();
}

void CompoundClone3D::setModel(IModel3D* value)
{
    IClone3D::setModel(value);
    IObject3D* object = value != nullptr ? value->getObject(lod) : nullptr;
    if (object != nullptr && std::strcmp(object->getInstanceClassName(), Compound3D::getClassName()) == 0) {
        shallow->cloneShallow(*static_cast<Compound3D*>(object));
    } else {
        shallow->releaseComponentJoints();
    }
    updateLimits();
    follow();
}

void CompoundClone3D::follow()
{
    if (matrixObject == nullptr) {
        return;
    }
    if (shallow->getMatrixObject() != matrixObject) {
        shallow->setMatriceObjectLinked(matrixObject);  // places the parts too
    } else {
        shallow->changeMatrixObject();
    }
}

void CompoundClone3D::changeMatrixObject()
{
    IObject3D::changeMatrixObject();
    follow();
}

bool CompoundClone3D::make()
{
    made = true;
    return true;
}

void CompoundClone3D::draw()
{
    if (!visible || matrixObject == nullptr) {
        return;
    }
    follow();
    shallow->draw();
}

bool CompoundClone3D::getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit)
{
    if (matrixObject == nullptr) {
        return false;
    }
    follow();
    return shallow->getIntersectingLine(origin, direction, hit);
}

void CompoundClone3D::updateLimits()
{
    shallow->updateLimits();
    localMin = shallow->getLocalMin();
    localMax = shallow->getLocalMax();
    computeWorldLimits();
}

bool CompoundClone3D::getMinPointY(Vector4D& p) const
{
    return shallow->getMinPointY(p);
}

void CompoundClone3D::setAge(float value)
{
    Object3D::setAge(value);
    std::list<IObject3D*> parts;
    shallow->supplyElements(parts, ~0);
    for (IObject3D* part : parts) {
        part->setAge(value);
    }
}

}  // namespace korvel
