#include "scene/IModel3D.h"

#include "scene/Compound3D.h"
#include "scene/IHandler3D.h"
#include "scene/ShapeIndexed3D.h"

#include <cstring>
#include <iostream>

namespace korvel {

const char* IModel3D::className = "IModel3D";

namespace {

// A copy of a level's object for the next level, or null when its kind
// cannot be copied and reduced.
IObject3D* copyForReduction(const IObject3D& object)
{
    if (!object.canReduceDetail()) {
        return nullptr;
    }
    const char* kind = object.getInstanceClassName();
    if (std::strcmp(kind, ShapeIndexed3D::getClassName()) == 0) {
        return new ShapeIndexed3D(static_cast<const ShapeIndexed3D&>(object));
    }
    if (std::strcmp(kind, Compound3D::getClassName()) == 0) {
        return new Compound3D(static_cast<const Compound3D&>(object));
    }
    return nullptr;
}

}  // namespace

IModel3D::IModel3D() : objects{nullptr, nullptr, nullptr, nullptr} {}

IModel3D::~IModel3D()
{
    releaseElementLOD();
}

void IModel3D::dump() const
{
    Object::dump();
    for (const IObject3D* object : objects) {
        if (object != nullptr) {
            object->dump();
        }
    }
}

IObject3D* IModel3D::getObject(int lod) const
{
    return (lod >= 0 && lod < levelCount) ? objects[lod] : nullptr;
}

void IModel3D::addObject(int lod, IObject3D* object)
{
    if (lod < 0 || lod >= levelCount || objects[lod] == object) {
        return;
    }
    IObject3D* old = objects[lod];
    objects[lod] = object;
    for (const IObject3D* other : objects) {
        if (other == old) {
            return;  // still used by another level
        }
    }
    delete old;
}

void IModel3D::releaseElementLOD()
{
    IObject3D::deleteEachOnce(objects, levelCount);
}

bool IModel3D::generateLOD()
{
    for (int lod = 1; lod < levelCount; ++lod) {
        if (objects[lod] != nullptr) {
            continue;
        }
        IObject3D* coarser = objects[lod - 1] != nullptr ? copyForReduction(*objects[lod - 1]) : nullptr;
        if (coarser == nullptr) {
            return true;  // this kind gets no further levels
        }
        objects[lod] = coarser;
        if (!coarser->reduceDetail(0.5f)) {
            return false;
        }
        coarser->make();
        coarser->updateLimits();
    }
    return true;
}

IHandler3D* IModel3D::createClones()
{
    auto* handler = new IHandler3D();
    for (short lod = 0; lod < levelCount; ++lod) {
        handler->setRepresentative(lod, createClone(lod));
    }
    handler->setLOD(0);
    return handler;
}

IHandler3D* IModel3D::getObjects()
{
    auto* handler = new IHandler3D();
    handler->setOwnsRepresentatives(false);
    for (short lod = 0; lod < levelCount; ++lod) {
        handler->setRepresentative(lod, objects[lod]);
    }
    handler->setLOD(0);
    return handler;
}

}  // namespace korvel
