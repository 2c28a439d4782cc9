#include "scene/IHandler3D.h"

#include "core/FactoryManager.h"
#include "geometry/Triangle.h"
#include "scene/SceneFactories.h"

#include <iostream>
#include <string>

namespace korvel {

const char* IHandler3D::className = "IHandler3D";

IHandler3D::IHandler3D() : current(nullptr), owns(true), representatives{nullptr, nullptr, nullptr, nullptr}, lod(0) {}

IHandler3D::~IHandler3D()
{
    if (owns) {
        releaseRepresentatives();
    }
}

bool IHandler3D::load(std::istream& in)
{
    bool result = IObject3D::load(in);
    short shown = 0;
    if (!(in >> shown)) {
        std::cout << "[Error] level ill-formed in IHandler3D load" << std::endl;
        return false;
    }
    registerSceneFactories();
    if (owns) {
        releaseRepresentatives();
    }
    initRepresentatives();
    current = nullptr;
    owns = true;
    for (short level = 0; level < levelCount && result; ++level) {
        std::string kind;
        if (!(in >> kind)) {
            std::cout << "[Error] representative ill-formed in IHandler3D load" << std::endl;
            return false;
        }
        if (kind == "none") {
            continue;
        }
        auto* created = dynamic_cast<IObject3D*>(FactoryManager::getInstance()->createObject(kind));
        if (created == nullptr) {
            std::cout << "[Error] Factory creation error in IHandler3D for " << kind << std::endl;
            return false;
        }
        setRepresentative(level, created);
        if (!enterNestedLoad(className)) {
            return false;
        }
        result = created->load(in);
        leaveNestedLoad();
    }
    setLOD(shown);
    return result;
}

bool IHandler3D::save(std::ostream& out)
{
    bool result = IObject3D::save(out);
    out << lod << '\n';
    for (IObject3D* representative : representatives) {
        if (representative == nullptr) {
            out << "none\n";
        } else {
            result = representative->save(out) && result;
        }
    }
    return result;
}

void IHandler3D::changeMatrixObject()
{
    if (current != nullptr && matrixObject != nullptr) {
        if (current->getMatrixObject() != nullptr && current->isMatrixObjectOwned()) {
            *current->getMatrixObjectChange() = *matrixObject;
            current->changeMatrixObject();
        } else {
            current->setMatriceObjectOwned(new Matrix4D(*matrixObject));
        }
    }
    IObject3D::changeMatrixObject();
}

void IHandler3D::draw()
{
    if (visible && current != nullptr) {
        current->draw();
    }
}

bool IHandler3D::make()
{
    made = false;
    return false;
}

bool IHandler3D::isMade() const
{
    return current != nullptr ? current->isMade() : made;
}

bool IHandler3D::getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit)
{
    return current != nullptr && current->getIntersectingLine(origin, direction, hit);
}

void IHandler3D::updateLimits()
{
    if (current != nullptr) {
        current->updateLimits();
        localMin = current->getLocalMin();
        localMax = current->getLocalMax();
    }
    computeWorldLimits();
}

void IHandler3D::setAge(float value)
{
    for (IObject3D* representative : representatives) {
        if (representative != nullptr) {
            representative->setAge(value);
        }
    }
}

void IHandler3D::setRepresentative(short level, IObject3D* object)
{
    if (level > 3) {
        std::cout << "[ERROR] representative lod of IHandler3D over range" << std::endl;
        return;
    }
    if (level < 0) {
        std::cout << "[ERROR] representative lod of IHandler3D under range" << std::endl;
        return;
    }
    representatives[level] = object;
}

IObject3D* IHandler3D::getRepresentative(short level) const
{
    // Unchecked by contract; outside the slots there is simply nothing.
    return (level >= 0 && level < levelCount) ? representatives[level] : nullptr;
}

void IHandler3D::setLOD(short level)
{
    lod = level;
    IObject3D* chosen = getRepresentative(level);
    if (chosen == current) {
        return;
    }
    current = chosen;
    // The handler's box is the shown one's: a handler fresh from its model
    // is seen and picked by the box of what it shows.
    if (current != nullptr) {
        localMin = current->getLocalMin();
        localMax = current->getLocalMax();
    }
    changeMatrixObject();
}

void IHandler3D::removeRepresentative(IObject3D* object)
{
    for (IObject3D*& representative : representatives) {
        if (representative == object) {
            representative = nullptr;
        }
    }
    if (current == object) {
        current = nullptr;
    }
}

void IHandler3D::initRepresentatives()
{
    for (IObject3D*& representative : representatives) {
        representative = nullptr;
    }
}

void IHandler3D::releaseRepresentatives()
{
    deleteEachOnce(representatives, levelCount);
    current = nullptr;
}

}  // namespace korvel
