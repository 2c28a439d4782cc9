// Routing of a real window's callbacks: the window is bound to the last
// application syndicated with it, and GLFW calls the manager's callbacks.

#include "app/Application3D.h"
#include "app/ApplicationManager3D.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class Recorder : public korvel::Application3D {
public:
    void manageKey(GLFWwindow*, int key, int, int, int) override { lastKey = key; }
    void manageCursorPos(GLFWwindow*, double x, double) override { lastX = x; }
    void manageButton(GLFWwindow*, int button, int, int) override { lastButton = button; }
    void manageScroll(GLFWwindow*, double, double y) override { lastScroll = y; }
    int lastKey = -1;
    double lastX = -1.0;
    int lastButton = -1;
    double lastScroll = 0.0;
};

TEST(ApplicationManager3DGLTest, ASecondSyndicationRebindsTheWindowAndInstallsTheCallbacks)
{
    if (std::getenv("DISPLAY") == nullptr || glfwInit() == GLFW_FALSE) {
        GTEST_SKIP() << "needs a display";
    }
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    GLFWwindow* window = glfwCreateWindow(64, 64, "routing", nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    Recorder first;
    Recorder second;
    korvel::ApplicationManager3D* manager = korvel::ApplicationManager3D::getInstance();
    ASSERT_TRUE(manager->syndicateWindow(window, &first));
    ASSERT_TRUE(manager->syndicateWindow(window, &second));

    // The callbacks GLFW now holds for the window are the manager's own.
    EXPECT_EQ(glfwSetKeyCallback(window, nullptr), &korvel::ApplicationManager3D::manageKeyCallback);
    EXPECT_EQ(glfwSetCursorPosCallback(window, nullptr), &korvel::ApplicationManager3D::manageCursorPosCallback);
    EXPECT_EQ(glfwSetScrollCallback(window, nullptr), &korvel::ApplicationManager3D::manageScrollCallback);
    EXPECT_EQ(glfwSetMouseButtonCallback(window, nullptr),
              &korvel::ApplicationManager3D::manageMouseButtonCallback);

    CaptureStdout out;
    korvel::ApplicationManager3D::manageKeyCallback(window, GLFW_KEY_Z, 0, GLFW_PRESS, 0);
    korvel::ApplicationManager3D::manageCursorPosCallback(window, 12.5, 3.0);
    korvel::ApplicationManager3D::manageMouseButtonCallback(window, GLFW_MOUSE_BUTTON_RIGHT, GLFW_RELEASE, 0);
    korvel::ApplicationManager3D::manageScrollCallback(window, 0.0, -2.0);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(second.lastKey, GLFW_KEY_Z);
    EXPECT_EQ(second.lastX, 12.5);
    EXPECT_EQ(second.lastButton, GLFW_MOUSE_BUTTON_RIGHT);
    EXPECT_EQ(second.lastScroll, -2.0);
    EXPECT_EQ(first.lastKey, -1);
    EXPECT_EQ(first.lastX, -1.0);

    glfwDestroyWindow(window);
    glfwTerminate();
}

}  // namespace
