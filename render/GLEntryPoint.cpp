#include "render/GLEntryPoint.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

namespace korvel {

GenericEntryPoint lookupEntryPoint(const char* name)
{
    // GLFW answers null without a current context, which makes every list
    // fail at its first name, as a missing function would.
    if (glfwGetCurrentContext() == nullptr) {
        return nullptr;
    }
    return glfwGetProcAddress(name);
}

}  // namespace korvel
