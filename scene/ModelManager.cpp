#include "scene/ModelManager.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace korvel {

const char* ModelManager::className = "ModelManager";

ModelManager::ModelManager() : current(models.end()) {}

ModelManager* ModelManager::getInstance()
{
    // Lives for the whole process; cleanUp empties it at shutdown.
    static ModelManager* instance = new ModelManager();
    return instance;
}

bool ModelManager::loadModels(const std::string& file)
{
    std::ifstream in(path + file);
    if (!in.is_open()) {
        std::cout << "[ERROR] model descriptor not found" << std::endl;
        return false;
    }
    std::cout << "[Information] Attempting to open model descriptor: " << file << std::endl;
    int count = 0;
    if (!(in >> count) || count < 0) {
        std::cout << "[ERROR] model descriptor count is not a number of models" << std::endl;
        return false;
    }
    std::cout << "[Information] found models list: " << count << " item(s)" << std::endl;
    for (int i = 0; i < count; ++i) {
        std::string name;
        if (!(in >> name)) {
            std::cout << "[ERROR] model descriptor ends after " << i << " of " << count << " model(s)"
                      << std::endl;
            break;
        }
        std::cout << "[Information] found model name: " << name << std::endl;
        if (!loadModel(name, in)) {
            std::cout << "[ERROR] loading model: " << name << std::endl;
        }
    }
    current = models.begin();
    return true;
}

bool ModelManager::loadModel(const std::string& name, std::istream& in)
{
    (void)name;
    std::string type;
    if (!(in >> type)) {
        return false;
    }
    if (type == "ModelShape") {
        if (verbose) {
            std::cout << "[Information] model of type Shape found" << std::endl;
        }
        // Shape models need the OBJ loader and the scene objects, which this
        // build does not carry yet: the model is refused, not half made.
        std::cout << "[ERROR] model type ModelShape not available in this build" << std::endl;
        return false;
    }
    std::cout << "[ERROR] unknown model type: " << type << std::endl;
    return false;
}

IModel3D* ModelManager::getModel(const std::string& name) const
{
    const auto found = models.find(name);
    return found == models.end() ? nullptr : found->second;
}

void ModelManager::modelNext()
{
    if (models.empty()) {
        return;
    }
    if (current == models.end() || ++current == models.end()) {
        current = models.begin();
    }
}

void ModelManager::modelPrevious()
{
    if (models.empty()) {
        return;
    }
    if (current == models.begin() || current == models.end()) {
        current = std::prev(models.end());
    } else {
        --current;
    }
}

std::string ModelManager::getCurrentModelName() const
{
    if (models.empty() || current == models.end()) {
        return std::string();
    }
    return current->first;
}

void ModelManager::releaseModels()
{
    if (verbose) {
        std::cout << "[information] releasing " << models.size() << " model(s)" << std::endl;
    }
    models.clear();
    current = models.end();
}

void ModelManager::cleanUp()
{
    releaseModels();
}

void ModelManager::dump() const
{
    Object::dump();
    std::cout << "path: " << path << std::endl;
    for (const auto& entry : models) {
        std::cout << "model: " << entry.first << std::endl;
    }
}

}  // namespace korvel
