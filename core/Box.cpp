#include "core/Box.h"

namespace korvel {

const char* Box::className = "Box";

Box::Box(Vector4D a, Vector4D b) : min(a), max(a)
{
    min.minimize(b);
    max.maximize(b);
}

bool Box::isIn(const Vector4D& p) const
{
    return min.x <= p.x && min.y <= p.y && min.z <= p.z && p.x <= min.x && p.y <= min.y && p.z <= min.z;
}

}  // namespace korvel
