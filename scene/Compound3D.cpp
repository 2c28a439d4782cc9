#include "scene/Compound3D.h"

#include "geometry/Triangle.h"
#include "scene/Joint3D.h"
#include "scene/SceneFactories.h"

#include <iomanip>
#include <iostream>
#include <sstream>

namespace korvel {

const char* Compound3D::className = "Compound3D";

namespace {

Vector4D lower(const Vector4D& a, const Vector4D& b)
{
    return Vector4D(std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z), 1.0f);
}

Vector4D upper(const Vector4D& a, const Vector4D& b)
{
    return Vector4D(std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z), 1.0f);
}

}  // namespace

Compound3D::Compound3D() : unnamedCount(0) {}

Compound3D::Compound3D(const Compound3D& other) : IObject3D(other), unnamedCount(other.unnamedCount)
{
    copyComponentJoints(other);
}

Compound3D::~Compound3D()
{
    releaseComponentJoints();
}

void Compound3D::dump() const
{
    IObject3D::dump();
    std::cout << "Nbre of components in Compound3D: " << joints.size() << std::endl;
    for (const auto& [componentName, joint] : joints) {
        std::cout << "Component: " << componentName << std::endl;
        joint->dump();
    }
}

bool Compound3D::load(std::istream& in)
{
    bool result = IObject3D::load(in);
    long count = -1;
    if (!(in >> count) || count < 0) {
        std::cout << "[Error] component count ill-formed in Compound3D load" << std::endl;
        return false;
    }
    if (!enterNestedLoad(className)) {
        return false;
    }
    registerSceneFactories();
    releaseComponentJoints();
    for (long i = 0; i < count && result; ++i) {
        std::string componentName;
        if (!(in >> std::quoted(componentName))) {
            std::cout << "[Error] component name ill-formed in Compound3D load" << std::endl;
            result = false;
            break;
        }
        auto* joint = new Joint3D();
        result = joint->load(in);
        delete joints[componentName];
        joints[componentName] = joint;
    }
    leaveNestedLoad();
    updateLimits();
    return result;
}

bool Compound3D::save(std::ostream& out)
{
    bool result = IObject3D::save(out);
    out << joints.size() << '\n';
    for (const auto& [componentName, joint] : joints) {
        out << std::quoted(componentName) << '\n';
        result = joint->save(out) && result;
    }
    return result;
}

void Compound3D::changeMatrixObject()
{
    IObject3D::changeMatrixObject();
    update();
}

void Compound3D::supplyElements(std::list<IObject3D*>& elements, int kinds)
{
    for (auto& entry : joints) {
        entry.second->supplyElements(elements, kinds);
    }
}

bool Compound3D::reduceDetail(float factor)
{
    bool reduced = false;
    for (auto& entry : joints) {
        if (!entry.second->canReduceDetail()) {
            continue;  // kept whole
        }
        if (!entry.second->reduceDetail(factor)) {
            return false;
        }
        reduced = true;
    }
    return reduced;
}

bool Compound3D::canReduceDetail() const
{
    for (const auto& entry : joints) {
        if (entry.second->canReduceDetail()) {
            return true;
        }
    }
    return false;
}

bool Compound3D::make()
{
    for (auto& entry : joints) {
        if (!entry.second->make()) {
            return false;
        }
    }
    made = true;
    return true;
}

void Compound3D::draw()
{
    if (!visible) {
        return;
    }
    for (auto& entry : joints) {
        entry.second->draw();
    }
}

void Compound3D::transform(const Matrix4D& m)
{
    for (auto& entry : joints) {
        entry.second->transform(m);
    }
}

bool Compound3D::getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit)
{
    bool found = false;
    float nearest = 0.0f;
    for (auto& entry : joints) {
        IObject3D* component = entry.second->getComponent();
        Triangle candidate;
        if (component == nullptr || !component->getIntersectingLine(origin, direction, candidate)) {
            continue;
        }
        const float distance = (candidate.getIsoBaryCenter() - origin).norm3D();
        if (!found || distance < nearest) {
            found = true;
            nearest = distance;
            hit = candidate;
        }
    }
    return found;
}

void Compound3D::mergeLimits(const Joint3D& joint, bool first)
{
    // The component's whole box as the joint places it: the joint's own two
    // corners alone would flatten a turned component.
    Vector4D low;
    Vector4D high;
    const IObject3D* component = joint.getComponent();
    if (component != nullptr && joint.getMatrixObject() != nullptr) {
        placedBounds(*joint.getMatrixObject(), component->getLocalMin(), component->getLocalMax(), low, high);
    } else {
        low = lower(joint.getLocalMin(), joint.getLocalMax());
        high = upper(joint.getLocalMin(), joint.getLocalMax());
    }
    localMin = first ? low : lower(localMin, low);
    localMax = first ? high : upper(localMax, high);
}

void Compound3D::updateLimits()
{
    bool first = true;
    for (auto& entry : joints) {
        entry.second->updateLimits();
        mergeLimits(*entry.second, first);
        first = false;
    }
    computeWorldLimits();
}

bool Compound3D::getMinPointY(Vector4D& p) const
{
    bool found = false;
    for (const auto& entry : joints) {
        Vector4D lowest;
        if (entry.second->getMinPointY(lowest) && (!found || lowest.y < p.y)) {
            p = lowest;
            found = true;
        }
    }
    return found;
}

void Compound3D::update()
{
    if (matrixObject == nullptr) {
        return;
    }
    for (auto& entry : joints) {
        entry.second->update(*matrixObject);
    }
}

std::string Compound3D::addJoinedComponent(IObject3D* object)
{
    std::string generated;
    do {
        std::ostringstream text;
        text << "component" << std::setw(6) << std::setfill('0') << unnamedCount++;
        generated = text.str();
    } while (joints.count(generated) != 0);
    return addJoinedComponent(object, generated);
}

std::string Compound3D::addJoinedComponent(IObject3D* object, const std::string& componentName)
{
    auto* joint = new Joint3D(object);
    const bool first = joints.empty();
    // An entry already under the name is pointed at the new joint; the old
    // joint is left to whoever holds it.
    joints[componentName] = joint;
    // Only the new joint's box is merged: the others are as the last update
    // left them, and a full update per addition would make loading a file
    // of many groups quadratic.
    joint->updateLimits();
    mergeLimits(*joint, first);
    computeWorldLimits();
    return componentName;
}

void Compound3D::releaseComponentJoints()
{
    for (auto& entry : joints) {
        delete entry.second;
    }
    joints.clear();
}

void Compound3D::copyComponentJoints(const Compound3D& other)
{
    // Components are copied through the factories of their classes.
    registerSceneFactories();
    for (const auto& [componentName, joint] : other.joints) {
        auto* copy = new Joint3D(*joint);
        delete joints[componentName];
        joints[componentName] = copy;
    }
}

Joint3D* Compound3D::getJoint(const std::string& componentName) const
{
    const auto found = joints.find(componentName);
    return found != joints.end() ? found->second : nullptr;
}

}  // namespace korvel
