#pragma once
// A cylinder (or truncated cone) along its local z axis: a bottom disc, an
// optional top disc and the side wall. With the default winding every face
// looks outwards.

#include "geometry/GeometryTemplate.h"

namespace korvel {

class Cylinder : public GeometryTemplate {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    // Upright (local frame = world axes) from base, closed.
    Cylinder(const Vector4D& base, float height, float radius);
    // Axis from `from` to `to`, closed; see the five-argument form.
    Cylinder(const Vector4D& from, const Vector4D& to, float radius);
    // Axis from `from` to `to`: local z runs along to - from and the height is
    // their distance. The local x axis is the world axis least aligned with
    // the direction, made orthogonal to it (so a direction along +z gives the
    // world frame); y = z x x. Equal points give a flat cylinder, upright.
    Cylinder(const Vector4D& from, const Vector4D& to, float bottomRadius, float topRadius, bool closed);

    void includeShape(Shape* shape, const Material* m) const override;
    // The side wall alone.
    void includeBody(Shape* shape, const Material* m) const;

    const Vector4D& getBase() const { return base; }
    float getHeight() const { return height; }
    float getBottomRadius() const { return bottomRadius; }
    float getTopRadius() const { return topRadius; }
    bool isClosed() const { return closed; }

private:
    Vector4D base;
    float height;
    float bottomRadius;
    float topRadius;
    bool closed;
};

}  // namespace korvel
