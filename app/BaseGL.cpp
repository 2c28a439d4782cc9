#include "app/BaseGL.h"

#include <GLFW/glfw3.h>

const char* BaseGL::className = "BaseGL";
bool BaseGL::ready = false;

bool BaseGL::init()
{
    ready = glfwGetCurrentContext() != nullptr;
    return ready;
}

void BaseGL::setVSync(bool enabled)
{
    if (ready && glfwGetCurrentContext() != nullptr) {
        glfwSwapInterval(enabled ? 1 : 0);
    }
}
