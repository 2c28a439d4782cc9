#pragma once
// Holds one representative object per level of detail and shows one of them:
// moving the handler moves the shown representative with it. One object may
// stand for several levels. When the handler owns its representatives it
// deletes each distinct one once.
//
// Levels outside 0..3 are refused by setRepresentative with a message; the
// readers (getRepresentative, setLOD) do not check the level, and find no
// representative there.

#include "scene/IObject3D.h"

namespace korvel {

class IHandler3D : public IObject3D {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    static constexpr short levelCount = 4;

    IHandler3D();
    IHandler3D(const IHandler3D&) = delete;
    IHandler3D& operator=(const IHandler3D&) = delete;
    ~IHandler3D() override;

    const char* getInstanceClassName() const override { return className; }
    // The IObject3D part, the level shown, then per level its
    // representative as it saves itself (class name first) or "none".
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;
    bool isSerializable() override { return true; }

    // The shown representative takes a copy of the handler's matrix.
    void changeMatrixObject() override;
    void draw() override;
    bool make() override;
    bool isMade() const override;
    bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit) override;
    // The shown representative's limits.
    void updateLimits() override;
    void setAge(float value) override;

    void setRepresentative(short lod, IObject3D* object);
    IObject3D* getRepresentative(short lod) const;
    // A representative that becomes the shown one lends the handler its
    // local limits.
    void setLOD(short lod);
    short getLOD() const { return lod; }
    IObject3D* getCurrent() const { return current; }
    void removeRepresentative(IObject3D* object);
    void initRepresentatives();
    void releaseRepresentatives();

    bool ownsRepresentatives() const { return owns; }
    void setOwnsRepresentatives(bool value) { owns = value; }

private:
    IObject3D* current;
    bool owns;
    IObject3D* representatives[levelCount];
    short lod;
};

}  // namespace korvel
