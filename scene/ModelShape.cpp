#include "scene/ModelShape.h"

#include "geometry/LoaderFormatOBJ.h"
#include "scene/Clone3D.h"
#include "scene/CompoundClone3D.h"
#include "scene/ModelManager.h"
#include "scene/SceneFactories.h"

#include <iostream>

namespace korvel {

const char* ModelShape::className = "ModelShape";

IObject3D* ModelShape::createClone(short lod)
{
    IClone3D* clone = compound ? static_cast<IClone3D*>(new CompoundClone3D()) : new Clone3D();
    clone->setLOD(lod);
    clone->setModel(this);
    return clone;
}

bool ModelShape::load(std::istream& in)
{
    int type = 0;
    if (!(in >> type)) {
        std::cout << "[ERROR] model description type ill-formed" << std::endl;
        return false;
    }
    descriptionType = type;
    if (isVerbose) {
        std::cout << "[Information] Type of model file description" << type << std::endl;
    }
    switch (type) {
    case descriptionRaw:
        return loadRAW(in);
    case descriptionOBJ:
        return loadOBJ(in);
    case descriptionXML:
        return loadXML(in);
    default:
        return true;  // accepted, nothing to load
    }
}

bool ModelShape::loadRAW(std::istream&)
{
    std::cout << "[ERROR] raw model description is not supported" << std::endl;
    return false;
}

bool ModelShape::loadXML(std::istream&)
{
    std::cout << "[ERROR] XML model description is not supported" << std::endl;
    return false;
}

bool ModelShape::save(std::ostream&)
{
    return false;
}

bool ModelShape::loadOBJ(std::istream& in)
{
    // Compound levels are copied component by component through the
    // factories.
    registerSceneFactories();
    LoaderFormatOBJ loader;
    loader.setVerbose(isVerbose);
    if (manager != nullptr) {
        loader.setPath(manager->getPath());
    }
    const bool loaded = loader.load(in);
    descriptionEntry = loader.getFileName();
    if (!loaded) {
        return false;
    }
    addObject(0, loader.feedObject(compound));
    if (!generateLOD()) {
        std::cout << "[ERROR] LOD generation for model is addressed with error" << std::endl;
        return false;
    }
    return true;
}

}  // namespace korvel
