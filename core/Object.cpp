#include "core/Object.h"

#include "core/InstanceRegistry.h"

#include <iostream>

const char* Object::className = "Object";
int32_t Object::counter = 0;

InstanceRegistry& Object::registry()
{
    // Function-local so that objects built during static initialisation find
    // a registry already there.
    static InstanceRegistry instances;
    return instances;
}

Object::Object() : id(counter++), verbose(false), alive(true)
{
    enter(this);
}

// A copy is a new instance: it gets its own identity and registry entry.
Object::Object(const Object& other) : id(counter++), verbose(other.verbose), alive(true)
{
    enter(this);
}

void Object::enter(Object* object)
{
    registry().set(object->id, object, true);
}

Object& Object::operator=(const Object& other)
{
    verbose = other.verbose;
    return *this;
}

Object::~Object()
{
    registry().erase(id);
}

int32_t Object::identify()
{
    id = counter++;
    return counter;
}

void Object::addInstance(Object* object)
{
    registry().set(object->id, object, false);
}

void Object::removeInstance(Object* object)
{
    registry().erase(object->id);
}

void Object::dump() const
{
    std::cout << "Object address: " << static_cast<const void*>(this) << std::endl;
    std::cout << "Object class: " << getInstanceClassName() << std::endl;
}

void Object::dumpInstances()
{
    registry().forEach([](int32_t key, const Object* object) {
        const char* name = object->getInstanceClassName();
        if (name == nullptr) {
            std::cout.setstate(std::ios::badbit);
            return;
        }
        std::cout << "Object ID: " << key << " / instance of class: " << name << std::endl;
    });
}

void Object::dumpSizeInstances()
{
    std::cout << "Count of initialized Objects: " << registry().size() << std::endl;
}

std::size_t Object::countInstances()
{
    return registry().size();
}
