#pragma once
// The clone of a model whose level is a compound. It keeps a shallow
// compound (stand-ins sharing the model's component geometry) that follows
// its matrix: the shallow compound's matrix is linked to the clone's, and
// the components are placed again before each draw and each line test, so
// that a matrix changed in place without notice is followed too.

#include "scene/IClone3D.h"

namespace korvel {

class CompoundShallow3D;

class CompoundClone3D : public IClone3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    CompoundClone3D();
    // A new shallow compound on the same model level.
    CompoundClone3D(const CompoundClone3D& other);
    ~CompoundClone3D() override;

    const char* getInstanceClassName() const override { return className; }
    void dump() const override;

    void setModel(IModel3D* value) override;
    void changeMatrixObject() override;
    bool make() override;
    void draw() override;
    bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit) override;
    void updateLimits() override;
    bool getMinPointY(Vector4D& p) const override;
    void setAge(float value) override;

    CompoundShallow3D* getShallow() const { return shallow; }

private:
    // Links the shallow compound's matrix to this one and places its parts.
    void follow();

    CompoundShallow3D* shallow;
};

}  // namespace korvel
