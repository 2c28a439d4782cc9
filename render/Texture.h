#pragma once
// What a drawable object refers to as its texture; activateDraw binds it on
// the active texture unit.

#include "core/Object.h"

namespace korvel {

class Texture : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    virtual void activateDraw() = 0;
};

}  // namespace korvel
