#include "scene/Joint3D.h"

#include "core/FactoryManager.h"
#include "scene/SceneFactories.h"

#include <iostream>
#include <string>

namespace korvel {

const char* Joint3D::className = "Joint3D";

namespace {

// A copy of object through the factory of its class, or null.
IObject3D* copyThroughFactory(const IObject3D& object)
{
    ISerializable* copy = FactoryManager::getInstance()->createObject(static_cast<const ISerializable&>(object));
    auto* copied = dynamic_cast<IObject3D*>(copy);
    if (copied == nullptr) {
        delete copy;
        std::cout << "[Warning] Joint3D copy without factory for " << object.getInstanceClassName()
                  << ", the component is not copied" << std::endl;
    }
    return copied;
}

}  // namespace

Joint3D::Joint3D(IObject3D* value) : component(value) {}

Joint3D::Joint3D(const Joint3D& other)
    : IObject3D(other), component(other.component != nullptr ? copyThroughFactory(*other.component) : nullptr)
{
}

Joint3D::~Joint3D()
{
    releaseComponent();
}

void Joint3D::dump() const
{
    IObject3D::dump();
    if (component != nullptr) {
        component->dump();
    }
}

bool Joint3D::load(std::istream& in)
{
    bool result = IObject3D::load(in);
    Matrix4D placement;
    if (matrixObject == nullptr || !placement.load(in)) {
        std::cout << "[Error] placement ill-formed in Joint3D load" << std::endl;
        return false;
    }
    *matrixObject = placement;
    changeMatrixObject();
    std::string kind;
    if (!(in >> kind)) {
        std::cout << "[Error] component ill-formed in Joint3D load" << std::endl;
        return false;
    }
    if (kind == "none") {
        setComponent(nullptr);
        return result;
    }
    auto* created = dynamic_cast<IObject3D*>(FactoryManager::getInstance()->createObject(kind));
    if (created == nullptr) {
        std::cout << "[Error] Factory creation error in Joint3D for " << kind << std::endl;
        return false;
    }
    setComponent(created);
    if (!enterNestedLoad(className)) {
        return false;
    }
    result = created->load(in) && result;
    leaveNestedLoad();
    updateLimits();
    return result;
}

bool Joint3D::save(std::ostream& out)
{
    const bool result = IObject3D::save(out);
    if (matrixObject != nullptr) {
        matrixObject->save(out);
    } else {
        Matrix4D::getI4().save(out);
    }
    if (component == nullptr) {
        out << "none\n";
        return result;
    }
    return component->save(out) && result;
}

void Joint3D::computeWorldLimits()
{
}

void Joint3D::supplyElements(std::list<IObject3D*>& elements, int kinds)
{
    if (component != nullptr) {
        component->supplyElements(elements, kinds);
    }
}

bool Joint3D::reduceDetail(float factor)
{
    return component != nullptr && component->reduceDetail(factor);
}

bool Joint3D::canReduceDetail() const
{
    return component != nullptr && component->canReduceDetail();
}

bool Joint3D::make()
{
    return component == nullptr || component->make();
}

void Joint3D::draw()
{
    if (component != nullptr) {
        component->draw();
    }
}

void Joint3D::transform(const Matrix4D& m)
{
    if (component != nullptr && matrixObject != nullptr) {
        component->transform(*matrixObject * m);
    }
}

void Joint3D::updateLimits()
{
    if (component == nullptr || matrixObject == nullptr) {
        return;
    }
    component->updateLimits();
    localMin = *matrixObject * component->getLocalMin();
    localMax = *matrixObject * component->getLocalMax();
    computeWorldLimits();
}

bool Joint3D::getMinPointY(Vector4D& p) const
{
    Vector4D lowest;
    if (component == nullptr || matrixObject == nullptr || !component->getMinPointY(lowest)) {
        return false;
    }
    p = *matrixObject * lowest;
    return true;
}

void Joint3D::update(const Matrix4D& parent)
{
    if (component == nullptr || matrixObject == nullptr) {
        return;
    }
    Matrix4D* placed = component->getMatrixObjectChange();
    if (placed == nullptr) {
        component->setMatriceObjectOwned(new Matrix4D(parent * *matrixObject));
        return;
    }
    *placed = parent * *matrixObject;
    component->changeMatrixObject();
}

void Joint3D::setComponent(IObject3D* value)
{
    if (value != component) {
        delete component;
        component = value;
    }
}

void Joint3D::releaseComponent()
{
    delete component;
    component = nullptr;
}

}  // namespace korvel
