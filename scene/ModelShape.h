#pragma once
// A model read from a model file: its level 0 is the object the loader
// built (a shape, or a compound of shapes), the other levels are generated.
// Its entry in the model descriptor is a description type and that type's
// own entry: 1 and an OBJ file name; 0 (raw) and 2 (XML) are not supported;
// any other type loads nothing.

#include "scene/IModel3D.h"

#include <istream>
#include <ostream>
#include <string>

namespace korvel {

class ModelShape : public IModel3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static constexpr int descriptionRaw = 0;
    static constexpr int descriptionOBJ = 1;
    static constexpr int descriptionXML = 2;

    ModelShape() = default;

    using IModel3D::createClone;
    // A CompoundClone3D for a compound model, a Clone3D otherwise.
    IObject3D* createClone(short lod) override;

    virtual bool load(std::istream& in);
    virtual bool loadRAW(std::istream& in);
    virtual bool loadOBJ(std::istream& in);
    virtual bool loadXML(std::istream& in);
    virtual bool save(std::ostream& out);

    bool isCompound() const { return compound; }
    // The description read by load, to write the descriptor back: its type
    // (-1 before any) and its entry (the OBJ file name).
    int getDescriptionType() const { return descriptionType; }
    const std::string& getDescriptionEntry() const { return descriptionEntry; }

private:
    bool compound = false;
    int descriptionType = -1;
    std::string descriptionEntry;
};

}  // namespace korvel
