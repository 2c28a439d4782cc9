#pragma once
// A drawing container for scenes that keep their objects in one map: opaque
// objects are drawn in key order, blended ones after them, with blending on,
// in the order the walk met them.
//
// The objects are not owned: whoever adds one deletes it, after removing it
// here (removal also drops it from the blended list of the last draw).
// Main thread only, with a GL context current for draw and drawBlended.

#include "core/Object.h"

#include <cstddef>
#include <list>
#include <map>
#include <string>

namespace korvel {

class IObject3D;

class WindowGL : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    WindowGL() = default;
    WindowGL(const WindowGL&) = delete;
    WindowGL& operator=(const WindowGL&) = delete;

    // Consulted for every object of the walk; a derived container may cull.
    virtual bool shouldDraw(IObject3D* object) const;
    virtual void draw();
    // Draws the blended list of the last draw with blending on.
    virtual void drawBlended();

    // False, with a message, for a null object or a key already used (the
    // object held under it stays).
    bool addObject(const std::string& key, IObject3D* object);
    // False, with a message, for an unknown key.
    bool removeObject(const std::string& key);
    // Null for an unknown key.
    IObject3D* getObject(const std::string& key) const;
    std::size_t countObjects() const { return objects.size(); }
    // Forgets every object; none is deleted.
    void clearObjects();

    const std::list<IObject3D*>& getBlended() const { return blended; }

private:
    std::map<std::string, IObject3D*> objects;
    std::list<IObject3D*> blended;
};

}  // namespace korvel
