#include "scene/IClone3D.h"

#include "scene/IModel3D.h"
#include "scene/ModelManager.h"

#include <iostream>

namespace korvel {

const char* IClone3D::className = "IClone3D";

IClone3D::IClone3D() : model(nullptr), lod(0) {}

bool IClone3D::load(std::istream& in)
{
    // Read whole even when the program is unknown: the model may bring one.
    const bool objectRead = Object3D::load(in);
    std::string modelName;
    if (!(in >> modelName)) {
        std::cout << "[Error] model name missing in clone load" << std::endl;
        return false;
    }
    if (!linkModel(modelName)) {
        std::cout << "[Error] model not found for clone: " << modelName << std::endl;
        return false;
    }
    return objectRead;
}

bool IClone3D::save(std::ostream& out)
{
    const bool result = Object3D::save(out);
    out << (model != nullptr && !model->getName().empty() ? model->getName() : "-") << '\n';
    return result;
}

void IClone3D::setModel(IModel3D* value)
{
    model = value;
}

bool IClone3D::linkModel(const std::string& modelName)
{
    IModel3D* found = ModelManager::getInstance()->getModel(modelName);
    setModel(found);
    return found != nullptr;
}

}  // namespace korvel
