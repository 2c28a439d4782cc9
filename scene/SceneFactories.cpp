#include "scene/SceneFactories.h"

#include "core/FactoryManager.h"
#include "core/IFactory.h"
#include "scene/Clone3D.h"
#include "scene/Compound3D.h"
#include "scene/CompoundClone3D.h"
#include "scene/CompoundShallow3D.h"
#include "scene/IHandler3D.h"
#include "scene/Joint3D.h"
#include "scene/Object3D.h"
#include "scene/ShapeIndexed3D.h"

#include <iostream>
#include <type_traits>

namespace korvel {

namespace {

int loadNesting = 0;

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
    // Kinds that cannot be copied (handlers own what they show) are only
    // created.
    IFactory::CopyFunction copy = nullptr;
    if constexpr (std::is_copy_constructible_v<Kind>) {
        copy = &copyKind<Kind>;
    }
    new IFactory(Kind::getClassName(), &createKind<Kind>, copy);  // owned by the manager
}

}  // namespace

void registerSceneFactories()
{
    registerKind<Object3D>();
    registerKind<Shape3D>();
    registerKind<ShapeIndexed3D>();
    registerKind<Compound3D>();
    registerKind<Joint3D>();
    registerKind<Clone3D>();
    registerKind<CompoundClone3D>();
    registerKind<CompoundShallow3D>();
    registerKind<IHandler3D>();
}

bool enterNestedLoad(const char* kind)
{
    if (loadNesting >= maxLoadNesting) {
        std::cout << "[Error] objects nested too deep in " << kind << " load" << std::endl;
        return false;
    }
    ++loadNesting;
    return true;
}

void leaveNestedLoad()
{
    --loadNesting;
}

}  // namespace korvel
