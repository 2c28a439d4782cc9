#include "core/Object.h"

#include <iostream>

const char* Object::className = "Object";
int32_t Object::counter = 0;

std::map<int32_t, Object*>& Object::registry()
{
    // Function-local so that objects built during static initialisation find
    // a registry already there.
    static std::map<int32_t, Object*> instances;
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
    // Fresh ids are the largest so far: hinting the end makes the insertion
    // constant time instead of a walk down the tree, which matters when a
    // parse creates a hundred thousand tokens.
    auto& instances = registry();
    instances.insert_or_assign(instances.end(), object->id, object);
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
    registry().emplace(object->id, object);
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
    for (const auto& [key, object] : registry()) {
        const char* name = object->getInstanceClassName();
        if (name == nullptr) {
            std::cout.setstate(std::ios::badbit);
            continue;
        }
        std::cout << "Object ID: " << key << " / instance of class: " << name << std::endl;
    }
}

void Object::dumpSizeInstances()
{
    std::cout << "Count of initialized Objects: " << registry().size() << std::endl;
}

std::size_t Object::countInstances()
{
    return registry().size();
}
