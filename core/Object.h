#pragma once
// Root of every class of the engine and the game.
//
// Every instance gets a numeric identity from a process-wide counter and is
// listed in a registry of live instances, ordered by id, from construction to
// destruction. The registry is how leaks are found at shutdown.
//
// Class-name convention, followed by every class: a static `className`, a
// static getClassName() returning it, and getInstanceClassName() overridden to
// return it, so that a base pointer tells the real class.
// Main thread only.

#include <cstddef>
#include <cstdint>

class InstanceRegistry;

class Object {
public:
    static const char* className;

    Object();
    Object(const Object& other);
    Object& operator=(const Object& other);
    virtual ~Object();

    virtual void dump() const;
    virtual const char* getInstanceClassName() const { return className; }
    static const char* getClassName() { return className; }

    // Takes a fresh id and returns counter's new value, that is id + 1: the
    // off-by-one is deliberate and callers rely on it. The registry keeps the
    // object under its old id.
    int32_t identify();

    static void addInstance(Object* object);
    static void removeInstance(Object* object);
    static void dumpInstances();
    static void dumpSizeInstances();
    static std::size_t countInstances();

    int32_t getId() const { return id; }
    bool isVerbose() const { return verbose; }
    void setVerbose(bool value) { verbose = value; }
    bool isAlive() const { return alive; }

protected:
    int32_t id;
    bool verbose;
    bool alive;

private:
    static InstanceRegistry& registry();
    static void enter(Object* object);
    static int32_t counter;
};
