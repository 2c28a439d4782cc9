#pragma once
// Interface of objects that are written to and read back from text streams.
// save() writes the instance's class name on its own line first, so that a
// reader can hand the rest to the right factory.

#include "core/Object.h"

#include <istream>
#include <ostream>

class ISerializable : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    virtual bool load(std::istream& in);
    virtual bool save(std::ostream& out);
    virtual bool isSerializable();
};
