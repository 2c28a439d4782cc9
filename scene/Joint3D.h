#pragma once
// Places one component inside a compound. The joint's own matrix is the
// component's placement relative to the compound; update gives the component
// the compound's matrix times that placement. The joint owns its component.

#include "scene/IObject3D.h"

namespace korvel {

class Joint3D : public IObject3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Takes ownership of component (may be null).
    explicit Joint3D(IObject3D* component = nullptr);
    // The component is copied through the factory of its class; without one
    // the copy has no component (and says so).
    Joint3D(const Joint3D& other);
    ~Joint3D() override;

    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    // The IObject3D part, the placement matrix, then the component as it
    // saves itself (its class name first), or the word "none".
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;
    bool isSerializable() override { return true; }

    // World limits are the component's business: a joint has none.
    void computeWorldLimits() override;
    void supplyElements(std::list<IObject3D*>& elements, int kinds) override;
    bool reduceDetail(float factor) override;
    bool canReduceDetail() const override;
    bool make() override;
    void draw() override;
    // The component is transformed by (placement x m); the placement stays.
    void transform(const Matrix4D& m) override;
    // The component's two local corners carried by the placement: under a
    // turned placement they need not span the placed component, which is
    // why a compound merges the component's whole placed box instead.
    void updateLimits() override;
    // The component's lowest point carried by the placement.
    bool getMinPointY(Vector4D& p) const override;
    // Sets the component's matrix, in place, to parent x placement.
    virtual void update(const Matrix4D& parent);

    // Deletes the old component and takes the new one.
    void setComponent(IObject3D* value);
    void releaseComponent();
    IObject3D* getComponent() const { return component; }

private:
    IObject3D* component;
};

}  // namespace korvel
