#include "app/WindowGL.h"

#include "scene/IObject3D.h"

#include <GL/gl.h>

#include <algorithm>
#include <iostream>

namespace korvel {

const char* WindowGL::className = "WindowGL";

bool WindowGL::shouldDraw(IObject3D*) const
{
    return true;
}

void WindowGL::draw()
{
    IObject3D::drawPlainListBlended(objects, [this](IObject3D* object) { return shouldDraw(object); }, blended);
    drawBlended();
}

void WindowGL::drawBlended()
{
    glEnable(GL_BLEND);
    for (IObject3D* object : blended) {
        object->draw();
    }
    glDisable(GL_BLEND);
}

bool WindowGL::addObject(const std::string& key, IObject3D* object)
{
    if (object == nullptr) {
        std::cout << "[Error] WindowGL cannot add a null object under " << key << std::endl;
        return false;
    }
    if (!objects.emplace(key, object).second) {
        std::cout << "[Warning] WindowGL key already used, object not added: " << key << std::endl;
        return false;
    }
    return true;
}

bool WindowGL::removeObject(const std::string& key)
{
    const auto found = objects.find(key);
    if (found == objects.end()) {
        std::cout << "[Warning] WindowGL has no object under " << key << std::endl;
        return false;
    }
    // The key's entry in the blended list goes too; an object held under
    // several keys keeps the entries of the others.
    const auto listed = std::find(blended.begin(), blended.end(), found->second);
    if (listed != blended.end()) {
        blended.erase(listed);
    }
    objects.erase(found);
    return true;
}

IObject3D* WindowGL::getObject(const std::string& key) const
{
    const auto found = objects.find(key);
    return found != objects.end() ? found->second : nullptr;
}

void WindowGL::clearObjects()
{
    objects.clear();
    blended.clear();
}

}  // namespace korvel
