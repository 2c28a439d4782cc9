#pragma once
// Geometry loaded once and drawn many times: up to four levels of detail
// (0 the finest), each an object the model owns, and the clones that draw
// them. Clones only point at the model's objects and GPU data, so a model
// must outlive its clones.

#include "core/Object.h"

#include <string>

namespace korvel {

class IHandler3D;
class IObject3D;
class ModelManager;

class IModel3D : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static constexpr int levelCount = 4;

    IModel3D();
    IModel3D(const IModel3D&) = delete;
    IModel3D& operator=(const IModel3D&) = delete;
    ~IModel3D() override;

    // The Object dump, then each level's.
    void dump() const override;

    // Null outside 0..3.
    IObject3D* getObject(int lod) const;
    // Stores object (owned from now on) in that level; ignored outside 0..3.
    // An object already there is deleted unless it stands in another level.
    void addObject(int lod, IObject3D* object);
    // Deletes the levels (an object standing in several levels once).
    void releaseElementLOD();
    // Fills the empty levels 1 to 3, each a copy of the level before with
    // half its detail (reduceDetail(0.5)), made. Generation stops, without
    // failing, at a level whose object cannot be copied (only indexed shapes
    // and compounds are) or reduced (a compound of plain shapes); it fails
    // when a reduction does.
    bool generateLOD();

    IObject3D* createClone() { return createClone(0); }
    virtual IObject3D* createClone(short lod) = 0;
    // A new handler (the caller owns it) holding clones of levels 0 to 3.
    IHandler3D* createClones();
    // A new handler showing the model's own objects, which it does not own.
    IHandler3D* getObjects();

    bool isVerbose = false;
    ModelManager* manager = nullptr;

    const std::string& getName() const { return name; }
    void setName(const std::string& value) { name = value; }

protected:
    IObject3D* objects[levelCount];
    std::string name;
};

}  // namespace korvel
