#include "app/ApplicationManager3D.h"

#include "app/Application3D.h"

#include <GLFW/glfw3.h>

#include <iostream>

namespace korvel {

const char* ApplicationManager3D::className = "ApplicationManager3D";

ApplicationManager3D* ApplicationManager3D::getInstance()
{
    // Deliberately never deleted: callbacks may still fire during shutdown.
    static ApplicationManager3D* instance = new ApplicationManager3D();
    return instance;
}

bool ApplicationManager3D::syndicateWindow(GLFWwindow* window, Application3D* application)
{
    if (window == nullptr) {
        std::cout << "[Error] syndication of NULL window" << std::endl;
        return false;
    }
    if (application == nullptr) {
        std::cout << "[Error] syndication of NULL application" << std::endl;
        return false;
    }
    applications[window] = application;
    syndicateKeyCallback(window);
    syndicateCursorPosCallback(window);
    syndicateScrollCallback(window);
    syndicateMouseButtonCallback(window);
    return true;
}

void ApplicationManager3D::syndicateKeyCallback(GLFWwindow* window)
{
    glfwSetKeyCallback(window, &ApplicationManager3D::manageKeyCallback);
}

void ApplicationManager3D::syndicateCursorPosCallback(GLFWwindow* window)
{
    glfwSetCursorPosCallback(window, &ApplicationManager3D::manageCursorPosCallback);
}

void ApplicationManager3D::syndicateMouseButtonCallback(GLFWwindow* window)
{
    glfwSetMouseButtonCallback(window, &ApplicationManager3D::manageMouseButtonCallback);
}

void ApplicationManager3D::syndicateScrollCallback(GLFWwindow* window)
{
    glfwSetScrollCallback(window, &ApplicationManager3D::manageScrollCallback);
}

Application3D* ApplicationManager3D::getApplication(GLFWwindow* window) const
{
    const auto found = applications.find(window);
    return found == applications.end() ? nullptr : found->second;
}

void ApplicationManager3D::manageKeyCallback(GLFWwindow* window, int key, int scancode, int action, int mods)
{
    Application3D* application = getInstance()->getApplication(window);
    if (application == nullptr) {
        std::cout << "[Error] Key callback application not available" << std::endl;
        return;
    }
    application->manageKey(window, key, scancode, action, mods);
}

void ApplicationManager3D::manageMouseButtonCallback(GLFWwindow* window, int button, int action, int mods)
{
    Application3D* application = getInstance()->getApplication(window);
    if (application == nullptr) {
        std::cout << "[Error] Mouse Button callback application not available" << std::endl;
        return;
    }
    application->manageButton(window, button, action, mods);
}

void ApplicationManager3D::manageCursorPosCallback(GLFWwindow* window, double x, double y)
{
    Application3D* application = getInstance()->getApplication(window);
    if (application == nullptr) {
        std::cout << "[Error] Cursor Position callback application not available" << std::endl;
        return;
    }
    application->manageCursorPos(window, x, y);
}

void ApplicationManager3D::manageScrollCallback(GLFWwindow* window, double xOffset, double yOffset)
{
    Application3D* application = getInstance()->getApplication(window);
    if (application == nullptr) {
        std::cout << "[Error] scroll callback application not available" << std::endl;
        return;
    }
    application->manageScroll(window, xOffset, yOffset);
}

}  // namespace korvel
