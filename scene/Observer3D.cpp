#include "scene/Observer3D.h"

#include "scene/IObject3D.h"

namespace korvel {

const char* Observer3D::className = "Observer3D";

void Observer3D::onNotify(Object* source, int32_t event)
{
    Observer::onNotify(source, event);
    if (isMatrixEvent(event) && observed != nullptr) {
        observed->changeMatrixObject();
    }
}

}  // namespace korvel
