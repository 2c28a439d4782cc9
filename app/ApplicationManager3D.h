#pragma once
// Routes GLFW's input callbacks, which only know their window, to the
// application that owns that window. One instance per process, never
// destroyed; main thread only (callbacks run inside glfwPollEvents).

#include "core/Object.h"

#include <map>

struct GLFWwindow;

namespace korvel {

class Application3D;

class ApplicationManager3D : public Object {
public:
    static const char* className;
    static const char* getClassName() { return className; }
    const char* getInstanceClassName() const override { return className; }

    static ApplicationManager3D* getInstance();

    // Binds (or re-binds) window to application and installs the key, cursor
    // position, scroll and mouse button callbacks, in that order.
    bool syndicateWindow(GLFWwindow* window, Application3D* application);
    void syndicateKeyCallback(GLFWwindow* window);
    void syndicateCursorPosCallback(GLFWwindow* window);
    void syndicateMouseButtonCallback(GLFWwindow* window);
    void syndicateScrollCallback(GLFWwindow* window);

    // The application bound to window, or null.
    Application3D* getApplication(GLFWwindow* window) const;

    static void manageKeyCallback(GLFWwindow* window, int key, int scancode, int action, int mods);
    static void manageMouseButtonCallback(GLFWwindow* window, int button, int action, int mods);
    static void manageCursorPosCallback(GLFWwindow* window, double x, double y);
    static void manageScrollCallback(GLFWwindow* window, double xOffset, double yOffset);

private:
    ApplicationManager3D() = default;

    std::map<GLFWwindow*, Application3D*> applications;
};

}  // namespace korvel
