#include "app/ApplicationQuorbane.h"

namespace korvel {

const char* ApplicationQuorbane::className = "ApplicationQuorbane";

bool ApplicationQuorbane::initWorld()
{
    return true;
}

bool ApplicationQuorbane::updateWorld(float elapsed)
{
    (void)elapsed;
    return true;
}

}  // namespace korvel
