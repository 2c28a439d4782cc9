#pragma once
// A light object that draws a model's geometry under a matrix of its own.
// It refers to its model (not owned) and to one of the model's levels of
// detail. Saved as its Object3D part and the model's name, it finds its
// model again by that name through the model manager.

#include "scene/Object3D.h"

#include <string>

namespace korvel {

class IModel3D;

class IClone3D : public Object3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    IClone3D();
    IClone3D(const IClone3D& other) = default;
    ~IClone3D() override = default;

    const char* getInstanceClassName() const override { return className; }
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;

    virtual void setModel(IModel3D* value);
    // The model of that name in the model manager; false when there is none.
    virtual bool linkModel(const std::string& modelName);

    IModel3D* getModel() const { return model; }
    short getLOD() const { return lod; }
    // Takes effect at the next setModel.
    void setLOD(short value) { lod = value; }

protected:
    IModel3D* model;
    short lod;
};

}  // namespace korvel
