#include "core/IFactory.h"

#include "core/FactoryManager.h"

#include <iostream>

namespace korvel {

const char* IFactory::className = "IFactory";

IFactory::IFactory(const char* name, CreateFunction createFunction, CopyFunction copyFunction)
    : createFunction(createFunction), copyFunction(copyFunction)
{
    if (name == nullptr) {
        std::cout << "[Error] IFactory: a factory needs a class name, this one is not registered" << std::endl;
        return;
    }
    FactoryManager::getInstance()->syndicateFactory(name, this);
}

IFactory::~IFactory()
{
    FactoryManager::forgetFactory(this);
}

ISerializable* IFactory::create() const
{
    return createFunction != nullptr ? createFunction() : nullptr;
}

ISerializable* IFactory::createCopy(const ISerializable& source) const
{
    return copyFunction != nullptr ? copyFunction(source) : nullptr;
}

}  // namespace korvel
