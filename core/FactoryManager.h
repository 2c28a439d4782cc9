#pragma once
// Process-wide register of factories by class name; it owns them. Main
// thread only, not guarded.

#include "core/ISerializable.h"
#include "core/Object.h"

#include <map>
#include <string>

namespace korvel {

class IFactory;

class FactoryManager : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static FactoryManager* getInstance();
    // Deletes the manager and its factories; the next getInstance starts empty.
    static void endService();

    // A second factory under a name already taken replaces the first, which
    // is neither deleted nor owned any more: classes register once.
    void syndicateFactory(const std::string& name, IFactory* factory);
    // Null when no factory has the name or its create function is null.
    ISerializable* createObject(const std::string& name) const;
    // Copies source through the factory of its instance class name.
    ISerializable* createObject(const ISerializable& source) const;
    void releaseFactories();

    // Called by a factory being deleted so no dangling entry stays behind.
    static void forgetFactory(IFactory* factory);

private:
    FactoryManager() = default;
    ~FactoryManager() override;
    FactoryManager(const FactoryManager&) = delete;
    FactoryManager& operator=(const FactoryManager&) = delete;

    const IFactory* find(const std::string& name) const;

    static FactoryManager* instance;
    std::map<std::string, IFactory*> factories;
};

}  // namespace korvel
