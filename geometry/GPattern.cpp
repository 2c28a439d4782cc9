#include "geometry/GPattern.h"

#include "core/Vector4D.h"

#include <iostream>

void GPattern::setPoint(const Vector4D& p)
{
    x = p.x;
    y = p.y;
    z = p.z;
}

void GPattern::setNormal(const Vector4D& n)
{
    nx = n.x;
    ny = n.y;
    nz = n.z;
}

void GPattern::dump() const
{
    std::cout << "x: " << x << " y: " << y << " z: " << z << std::endl;
    std::cout << "nx: " << nx << " ny: " << ny << " nz: " << nz << std::endl;
}
