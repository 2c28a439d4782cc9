#pragma once
// Base of everything the world draws, moves, picks or collides.
//
// Placement: an object matrix, owned (deleted here) or linked (owned
// elsewhere, for instance by a physical body the object follows). Callers
// that change the matrix in place call changeMatrixObject() afterwards, so
// that the world limits follow and the boundary box is rebuilt at the next
// line test.
//
// Limits: a local box in the object's own frame and its two corners carried
// into the world by the matrix. The world corners are the two local corners
// transformed, so under a rotation they need not be ordered (the world's
// visibility test is content with them). The boundary box used for picking
// is the whole local box carried by the matrix: its eight corners
// transformed, a box turned, scaled and moved with the object, so a line
// that crosses the object always crosses it.
//
// The class has two Object bases (one through ISerializable, one through
// Subject), so an IObject3D* converts to Object* only through one of them:
// notify(static_cast<Subject*>(this), ...). It is listed twice in the
// registry of live instances, both times under its own class name.
// Main thread only.

#include "core/ISerializable.h"
#include "core/Matrix4D.h"
#include "core/Subject.h"
#include "core/Vector4D.h"
#include "geometry/Shape.h"

#include <cstdint>
#include <istream>
#include <list>
#include <ostream>
#include <string>

namespace korvel {

class Observer3D;
class Triangle;

class IObject3D : public ISerializable, public Subject {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    // Element kinds are bits; the world sorts its drawing passes by them.
    static constexpr uint32_t kindPlain = 1;
    static constexpr uint32_t kindBlended = 2;

    IObject3D();
    // The copy gets an owned copy of the current matrix (even a linked one),
    // no observer and is not made: GPU data are not shared.
    IObject3D(const IObject3D& other);
    IObject3D& operator=(const IObject3D&) = delete;
    ~IObject3D() override;

    // "Matrix Object :" with the matrix, then the local limits.
    void dump() const override;
    const char* getInstanceClassName() const override { return className; }
    // The element kind as an integer; a class name written by save() before
    // it is skipped when the caller has not read it.
    bool load(std::istream& in) override;
    bool save(std::ostream& out) override;

    virtual void unchangeMatrixObject();
    // Lays the twelve triangles of the local box carried by the matrix (whose
    // corners include both world limits); without a matrix, of the box the
    // world limits span.
    virtual void computeBoundingBoxtoRef();
    virtual void computeWorldLimits();
    virtual void changeMatrixObject();
    // Created on first request and owned; it makes this object follow the
    // subjects it is attached to.
    virtual Observer3D* getObserver();
    virtual void changeView(const Matrix4D& view);
    // Appends this object when its element kind shares a bit with kinds.
    virtual void supplyElements(std::list<IObject3D*>& elements, int kinds);
    virtual bool reduceDetail(float factor);
    virtual bool make();
    virtual bool isMade() const;
    virtual void draw();
    virtual void hide();
    virtual void show();
    virtual void transform(const Matrix4D& m);
    // The line through origin along direction against the boundary box, which
    // is rebuilt first when the matrix or the limits changed since the last
    // test. A line that passes clear of the sphere around the box is
    // answered without looking at its triangles.
    virtual bool isIntersectingBoundariesLine(const Vector4D& origin, const Vector4D& direction);
    virtual bool getIntersectingLine(const Vector4D& origin, const Vector4D& direction, Triangle& hit);
    virtual void updateLimits();
    // Translates by the negated lowest point, so that point lands on the
    // origin (its height on 0). Nothing happens when no lowest point is known.
    virtual void setToMinPointY();
    // False, p untouched, when the object knows no lowest point.
    virtual bool getMinPointY(Vector4D& p) const;
    virtual void setAge(float age);
    // Whether reduceDetail can lower this object's detail: model levels are
    // generated only for objects that answer true.
    virtual bool canReduceDetail() const { return false; }

    // Both delete the current matrix when owned and take the new one; a null
    // matrix is refused.
    bool setMatriceObjectOwned(Matrix4D* m);
    bool setMatriceObjectLinked(Matrix4D* m);
    // For changes in place, to be followed by changeMatrixObject().
    Matrix4D* getMatrixObjectChange() { return matrixObject; }
    const Matrix4D* getMatrixObject() const { return matrixObject; }
    bool isMatrixObjectOwned() const { return matrixOwned; }
    bool isMatrixObjectChanged() const { return matrixChanged; }
    void releaseMatrixObject();
    void releaseObserver();
    // Deletes the objects of count slots, one standing in several slots
    // once, and nulls every slot.
    static void deleteEachOnce(IObject3D** slots, int count);
    // The eight corners of the box spanned by a and b (in any order): bit 0
    // of the index picks b's x, bit 1 b's y, bit 2 b's z; w is 1.
    static void boxCorners(const Vector4D& a, const Vector4D& b, Vector4D corners[8]);
    // The axis-aligned bounds of the box spanned by a and b once carried by m
    // (all eight corners: two are not enough under a rotation).
    static void placedBounds(const Matrix4D& m, const Vector4D& a, const Vector4D& b, Vector4D& low,
                             Vector4D& high);
    // The first pass of a frame over a keyed collection of objects: those
    // accept lets through are drawn at once, in key order, except the
    // blended ones, which are listed in blended (emptied first) for a second
    // pass with blending on, after every opaque face is in the depth buffer.
    template <class Objects, class Accept>
    static void drawPlainListBlended(const Objects& objects, Accept accept, std::list<IObject3D*>& blended)
    {
        blended.clear();
        for (const auto& entry : objects) {
            IObject3D* object = entry.second;
            if (!accept(object)) {
                continue;
            }
            if (object->getElementKind() == kindBlended) {
                blended.push_back(object);
            } else {
                object->draw();
            }
        }
    }

    // The name the object asks to be known by (a world or a compound may
    // register it under another one when it is taken). Not serialised here.
    const std::string& getName() const { return name; }
    void setName(const std::string& value) { name = value; }

    bool isVisible() const { return visible; }
    uint32_t getElementKind() const { return elementKind; }
    void setElementKind(uint32_t kind) { elementKind = kind; }
    const Shape& getBoundaries() const { return boundaries; }
    // Sets the local box and carries it into the world.
    void setLocalLimits(const Vector4D& min, const Vector4D& max);
    const Vector4D& getLocalMin() const { return localMin; }
    const Vector4D& getLocalMax() const { return localMax; }
    const Vector4D& getWorldMin() const { return worldMin; }
    const Vector4D& getWorldMax() const { return worldMax; }

protected:
    bool takeMatrix(Matrix4D* m, bool owned, const char* operation);
    // Writes the twelve triangles of the box with these corners (indexed as
    // boxCorners does) into boundaries, reusing the triangles already there.
    void layBoundaries(const Vector4D corners[8]);

    Matrix4D* matrixObject;
    bool matrixOwned;
    bool matrixChanged;
    Observer3D* observer;
    bool visible;
    uint32_t elementKind;
    Shape boundaries;
    Vector4D localMin;
    Vector4D localMax;
    Vector4D worldMin;
    Vector4D worldMax;
    bool made;
    std::string name;

private:
    // The sphere around the boundary box, for the quick refusal of lines
    // passing far from the object; fitted whenever the box is rebuilt.
    void fitBoundariesSphere();
    bool isLineNearBoundaries(const Vector4D& origin, const Vector4D& direction) const;

    // Set when the world limits are computed again: the box follows them.
    bool boundariesStale = true;
    Vector4D boundariesCentre;
    float boundariesRadius = 0.0f;
};

}  // namespace korvel
