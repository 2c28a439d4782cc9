#pragma once
// Keeps the models of the game by name, read once at start-up from the model
// descriptor, hands out clones of them, and keeps a browsing position over
// them for an interactive viewer. A singleton; main thread only. Models own
// their levels of detail; clones and handlers refer to them, so models are
// released (cleanUp) only after every clone is gone.
//
// Descriptor ("models.txt" under the manager's directory), whitespace
// separated: the number of models, then per model its name, its type word
// ("ModelShape") and the type's own entry (for an OBJ model: 1 and the file
// name, relative to the directory). saveModels writes the same format back.

#include "core/Object.h"

#include <istream>
#include <map>
#include <string>

namespace korvel {

class IHandler3D;
class IModel3D;
class IObject3D;

class ModelManager : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static ModelManager* getInstance();

    void setPath(const std::string& directory) { path = directory; }
    const std::string& getPath() const { return path; }

    // False, with a message, when the descriptor cannot be read or its count
    // is not a number; a model that fails to load is reported and the
    // others still load.
    bool loadModels(const std::string& file);
    // Reads one entry after its name. A ModelShape is added even when its
    // file failed (then false is returned); another type word is refused.
    bool loadModel(const std::string& name, std::istream& in);
    // Takes ownership of model; false (and model deleted) when the name is
    // already in use, as clones of the first may exist.
    bool addModel(const std::string& name, IModel3D* model);
    IModel3D* getModel(const std::string& name) const;
    std::size_t countModels() const { return models.size(); }

    // Null (with a message) for an unknown model. The caller owns the result.
    IObject3D* createClone(const std::string& name);
    IHandler3D* createClones(const std::string& name);
    IObject3D* getObject3D(const std::string& name, int lod) const;
    // A clone of the model at the browsing position; null with no model.
    IObject3D* createCurrentClone();

    // Browsing position; both wrap around and do nothing with no model.
    void modelNext();
    void modelPrevious();
    // Name at the browsing position, empty with no model.
    std::string getCurrentModelName() const;

    // Writes a descriptor of the models that came from one (file under the
    // directory); models added by hand are left out, with a warning.
    bool saveModels(const std::string& file);
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
