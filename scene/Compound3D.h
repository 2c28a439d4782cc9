#pragma once
// A named set of components, each placed by a Joint3D that the compound
// owns. Names are ordered (std::map): components are made and drawn in name
// order. A component added without a name is called "component" and its
// rank, six digits wide ("component000000", "component000001", ...), so that
// name order is the order of addition; a generated name already taken is
// skipped.
//
// Adding under a name already used points the entry at the new joint and
// forgets the old one without deleting it: whoever still holds the old joint
// (getJoint before the replacement) must delete it.
//
// Moving the compound (changeMatrixObject) moves every component: each one's
// matrix becomes the compound's matrix times its joint's placement.
//
// Detail reduction reduces the components that can be reduced and keeps the
// others (plain textured shapes) whole; it fails when a reducible component
// fails, or when none can be reduced.

#include "scene/IObject3D.h"

#include <map>
#include <string>

namespace korvel {

class Joint3D;

class Compound3D : public IObject3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    using Joints = std::map<std::string, Joint3D*>;

    Compound3D();
    // Copies every joint, and so every component (through the factories).
    Compound3D(const Compound3D& other);
    ~Compound3D() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    // The IObject3D part, the component count, then per component its name
    // (quoted) and its joint.
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;
    bool isSerializable() override { return true; }

    void changeMatrixObject() override;
    // Only the matching leaves, never the compound itself.
    void supplyElements(std::list<IObject3D*>& elements, int kinds) override;
    bool reduceDetail(float factor) override;
    bool canReduceDetail() const override;
    bool make() override;
    void draw() override;
    void transform(const Matrix4D& m) override;
    // The nearest hit among the components, as placed by the last update.
    bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit) override;
    // The union of the components' boxes (in the compound's frame).
    void updateLimits() override;
    // The lowest of the components' lowest points.
    bool getMinPointY(Vector4D& p) const override;

    // Each component's matrix becomes this matrix x its joint's placement.
    void update();
    // Wraps object (owned from now on) in a new joint; returns the name used.
    std::string addJoinedComponent(IObject3D* object);
    std::string addJoinedComponent(IObject3D* object, const std::string& componentName);
    void releaseComponentJoints();
    // Appends copies of other's joints under the same names.
    void copyComponentJoints(const Compound3D& other);

    const Joints& getJoints() const { return joints; }
    Joint3D* getJoint(const std::string& componentName) const;

private:
    // Merges the box of one joint into the compound's local box.
    void mergeLimits(const Joint3D& joint, bool first);

    Joints joints;
    int32_t unnamedCount;
};

}  // namespace korvel
