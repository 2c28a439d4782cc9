#pragma once
// Keeps the models of the game by name, read once at start-up from the model
// descriptor, and a browsing position over them for an interactive viewer.
// A singleton; main thread only.
//
// Descriptor ("models.txt" under the manager's directory), whitespace
// separated: the number of models, then per model its name, its type word and
// the type's own entry.

#include "core/Object.h"

#include <istream>
#include <map>
#include <string>

namespace korvel {

class IModel3D;

class ModelManager : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static ModelManager* getInstance();

    void setPath(const std::string& directory) { path = directory; }
    const std::string& getPath() const { return path; }

    // False, with a message, when the descriptor cannot be opened or its
    // count is not a number; a model that fails to load is reported and the
    // others still load.
    bool loadModels(const std::string& file);
    bool loadModel(const std::string& name, std::istream& in);
    IModel3D* getModel(const std::string& name) const;
    std::size_t countModels() const { return models.size(); }

    // Browsing position; both wrap around and do nothing with no model.
    void modelNext();
    void modelPrevious();
    // Name at the browsing position, empty with no model.
    std::string getCurrentModelName() const;

    void releaseModels();
    void cleanUp();
    void dump() const override;

private:
    ModelManager();

    std::string path;
    std::map<std::string, IModel3D*> models;
    std::map<std::string, IModel3D*>::iterator current;
};

}  // namespace korvel
