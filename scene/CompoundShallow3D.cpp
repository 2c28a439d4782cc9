#include "scene/CompoundShallow3D.h"

#include "core/FactoryManager.h"
#include "scene/Clone3D.h"
#include "scene/Joint3D.h"
#include "scene/SceneFactories.h"
#include "scene/ShapeIndexed3D.h"

#include <cstring>

namespace korvel {

const char* CompoundShallow3D::className = "CompoundShallow3D";

namespace {

IObject3D* standIn(IObject3D& component)
{
    const char* kind = component.getInstanceClassName();
    if (std::strcmp(kind, Shape3D::getClassName()) == 0 || std::strcmp(kind, ShapeIndexed3D::getClassName()) == 0) {
        auto* clone = new Clone3D();
        clone->setMother(static_cast<Shape3D*>(&component));
        return clone;
    }
    if (auto* nested = dynamic_cast<Compound3D*>(&component)) {
        auto* shallow = new CompoundShallow3D();
        shallow->cloneShallow(*nested);
        return shallow;
    }
    registerSceneFactories();
    return dynamic_cast<IObject3D*>(FactoryManager::getInstance()->createObject(static_cast<ISerializable&>(component)));
}

}  // namespace

void CompoundShallow3D::cloneShallow(Compound3D& model)
{
    releaseComponentJoints();
    for (const auto& [componentName, joint] : model.getJoints()) {
        IObject3D* component = joint->getComponent();
        addJoinedComponent(component != nullptr ? standIn(*component) : nullptr, componentName);
        Joint3D* placed = getJoint(componentName);
        if (placed->getMatrixObjectChange() != nullptr && joint->getMatrixObject() != nullptr) {
            *placed->getMatrixObjectChange() = *joint->getMatrixObject();
        }
    }
    updateLimits();
    update();
}

}  // namespace korvel
