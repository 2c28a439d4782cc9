#include "scene/SceneFactories.h"

#include "core/FactoryManager.h"
#include "core/IFactory.h"
#include "scene/Compound3D.h"
#include "scene/Joint3D.h"
#include "scene/Object3D.h"
#include "scene/ShapeIndexed3D.h"

namespace korvel {

namespace {

template <class Kind>
ISerializable* createKind()
{
    return static_cast<IObject3D*>(new Kind());
}

template <class Kind>
ISerializable* copyKind(const ISerializable& source)
{
    const auto* typed = dynamic_cast<const Kind*>(&source);
    return typed != nullptr ? static_cast<IObject3D*>(new Kind(*typed)) : nullptr;
}

template <class Kind>
void registerKind()
{
    FactoryManager* manager = FactoryManager::getInstance();
    // A second registration would orphan the first factory.
    if (ISerializable* probe = manager->createObject(Kind::getClassName())) {
        delete probe;
        return;
    }
    new IFactory(Kind::getClassName(), &createKind<Kind>, &copyKind<Kind>);  // owned by the manager
}

}  // namespace

void registerSceneFactories()
{
    registerKind<Object3D>();
    registerKind<Shape3D>();
    registerKind<ShapeIndexed3D>();
    registerKind<Compound3D>();
    registerKind<Joint3D>();
}

}  // namespace korvel
