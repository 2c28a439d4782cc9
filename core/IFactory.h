#pragma once
// Makes instances of one serialisable class from its name, or copies of an
// existing instance, for callers that do not know the type. A factory
// registers itself with FactoryManager on construction, and the manager owns
// it from then on: create factories with new and never delete them yourself
// while they are registered.

#include "core/ISerializable.h"
#include "core/Object.h"

namespace korvel {

class IFactory : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    using CreateFunction = ISerializable* (*)();
    using CopyFunction = ISerializable* (*)(const ISerializable& source);

    // Either function may be null; the matching operation then gives null.
    IFactory(const char* name, CreateFunction createFunction, CopyFunction copyFunction);
    ~IFactory() override;
    IFactory(const IFactory&) = delete;
    IFactory& operator=(const IFactory&) = delete;

    virtual ISerializable* create() const;
    virtual ISerializable* createCopy(const ISerializable& source) const;

private:
    CreateFunction createFunction;
    CopyFunction copyFunction;
};

}  // namespace korvel
