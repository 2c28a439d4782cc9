#include "core/FactoryManager.h"

#include "core/IFactory.h"

#include <iostream>
#include <iterator>
#include <set>

namespace korvel {

const char* FactoryManager::className = "FactoryManager";
FactoryManager* FactoryManager::instance = nullptr;

FactoryManager* FactoryManager::getInstance()
{
    if (instance == nullptr) {
        instance = new FactoryManager();
    }
    return instance;
}

void FactoryManager::endService()
{
    FactoryManager* ending = instance;
    instance = nullptr;
    delete ending;
}

FactoryManager::~FactoryManager()
{
    releaseFactories();
}

void FactoryManager::syndicateFactory(const std::string& name, IFactory* factory)
{
    if (factory == nullptr) {
        std::cout << "[Error] FactoryManager: no factory given for class " << name << ", nothing registered"
                  << std::endl;
        return;
    }
    factories[name] = factory;
}

const IFactory* FactoryManager::find(const std::string& name) const
{
    const auto found = factories.find(name);
    return found != factories.end() ? found->second : nullptr;
}

ISerializable* FactoryManager::createObject(const std::string& name) const
{
    const IFactory* factory = find(name);
    return factory != nullptr ? factory->create() : nullptr;
}

ISerializable* FactoryManager::createObject(const ISerializable& source) const
{
    const char* name = source.getInstanceClassName();
    if (name == nullptr) {
        return nullptr;
    }
    const IFactory* factory = find(name);
    return factory != nullptr ? factory->createCopy(source) : nullptr;
}

void FactoryManager::releaseFactories()
{
    // Taken out first: each deleted factory calls forgetFactory, which must
    // not edit the map under this loop. One factory under two names is
    // deleted once.
    std::map<std::string, IFactory*> owned;
    owned.swap(factories);
    std::set<IFactory*> deleted;
    for (const auto& entry : owned) {
        if (deleted.insert(entry.second).second) {
            delete entry.second;
        }
    }
}

void FactoryManager::forgetFactory(IFactory* factory)
{
    if (instance == nullptr) {
        return;
    }
    auto& registered = instance->factories;
    for (auto it = registered.begin(); it != registered.end();) {
        it = (it->second == factory) ? registered.erase(it) : std::next(it);
    }
}

}  // namespace korvel
