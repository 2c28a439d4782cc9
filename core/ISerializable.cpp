#include "core/ISerializable.h"

const char* ISerializable::className = "ISerializable";

bool ISerializable::load(std::istream&)
{
    return true;
}

bool ISerializable::save(std::ostream& out)
{
    const char* name = getInstanceClassName();
    if (name == nullptr) {
        out.setstate(std::ios::badbit);
        return true;
    }
    out << name << '\n';
    return true;
}

bool ISerializable::isSerializable()
{
    return false;
}
