#include "scene/ModelManager.h"

#include "scene/IHandler3D.h"
#include "scene/IModel3D.h"
#include "scene/ModelShape.h"
#include "scene/SceneFactories.h"

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>
#include <vector>

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
    const std::string fullName = path + file;
    // Only a regular file: a pipe or a device could block or never end.
    struct stat info;
    std::ifstream in;
    if (::stat(fullName.c_str(), &info) == 0 && S_ISREG(info.st_mode)) {
        in.open(fullName);
    }
    if (!in.is_open()) {
        std::cout << "[ERROR] model descriptor not found" << std::endl;
        return false;
    }
    std::cout << "[Information] Attempting to open model descriptor: " << file << std::endl;
    long count = 0;
    if (!(in >> count) || count < 0) {
        std::cout << "[ERROR] model descriptor count is not a number of models" << std::endl;
        return false;
    }
    std::cout << "[Information] found models list: " << count << " item(s)" << std::endl;
    registerSceneFactories();
    for (long i = 0; i < count; ++i) {
        std::string name;
        if (!(in >> name)) {
            std::cout << "[ERROR] model descriptor ends after " << i << " of " << count << " model(s)" << std::endl;
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
    std::string type;
    if (!(in >> type)) {
        return false;
    }
    if (type != ModelShape::getClassName()) {
        std::cout << "[ERROR] unknown model type: " << type << std::endl;
        return false;
    }
    if (verbose) {
        std::cout << "[Information] model of type Shape found" << std::endl;
    }
    auto* model = new ModelShape();
    model->isVerbose = verbose;
    model->manager = this;
    const bool loaded = model->load(in);
    if (!addModel(name, model)) {
        return false;
    }
    if (verbose) {
        std::cout << "[Information] model managed" << std::endl;
    }
    return loaded;
}

bool ModelManager::addModel(const std::string& name, IModel3D* model)
{
    if (model == nullptr) {
        return false;
    }
    if (models.count(name) != 0) {
        std::cout << "[Warning] model name already in use, the new model is dropped: " << name << std::endl;
        delete model;
        return false;
    }
    model->setName(name);
    model->manager = this;
    models.emplace(name, model);
    if (current == models.end()) {
        current = models.begin();
    }
    return true;
}

IModel3D* ModelManager::getModel(const std::string& name) const
{
    const auto found = models.find(name);
    return found == models.end() ? nullptr : found->second;
}

IObject3D* ModelManager::createClone(const std::string& name)
{
    IModel3D* model = getModel(name);
    if (model == nullptr) {
        std::cout << "[ERROR] model not found for clone: " << name << std::endl;
        return nullptr;
    }
    return model->createClone();
}

IHandler3D* ModelManager::createClones(const std::string& name)
{
    IModel3D* model = getModel(name);
    if (model == nullptr) {
        std::cout << "[ERROR] model not found for clone: " << name << std::endl;
        return nullptr;
    }
    return model->createClones();
}

IObject3D* ModelManager::getObject3D(const std::string& name, int lod) const
{
    IModel3D* model = getModel(name);
    return model != nullptr ? model->getObject(lod) : nullptr;
}

IObject3D* ModelManager::createCurrentClone()
{
    if (current == models.end()) {
        return nullptr;
    }
    return current->second->createClone();
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

bool ModelManager::saveModels(const std::string& file)
{
    std::vector<std::string> entries;
    for (const auto& [name, model] : models) {
        const auto* shape = dynamic_cast<const ModelShape*>(model);
        if (shape == nullptr || shape->getDescriptionType() < 0 || name.find_first_of(" \t\r\n") != std::string::npos) {
            std::cout << "[Warning] model without a descriptor entry is not saved: " << name << std::endl;
            continue;
        }
        std::ostringstream entry;
        entry << name << ' ' << ModelShape::getClassName() << ' ' << shape->getDescriptionType();
        if (shape->getDescriptionType() == ModelShape::descriptionOBJ) {
            entry << ' ' << shape->getDescriptionEntry();
        }
        entries.push_back(entry.str());
    }
    std::ofstream out(path + file);
    if (!out.is_open()) {
        std::cout << "[ERROR] model descriptor cannot be written: " << path + file << std::endl;
        return false;
    }
    out << entries.size() << '\n';
    for (const std::string& entry : entries) {
        out << entry << '\n';
    }
    return static_cast<bool>(out.flush());
}

void ModelManager::releaseModels()
{
    if (verbose) {
        std::cout << "[information] releasing " << models.size() << " model(s)" << std::endl;
    }
    for (auto& entry : models) {
        delete entry.second;
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
        entry.second->dump();
    }
}

}  // namespace korvel
