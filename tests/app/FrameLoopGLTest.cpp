// The frame loop on a real (hidden) window: world updates follow the real
// elapsed time, and the camera step follows the key rate of the last period.

#include "app/Application3D.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

class SlowFrames : public korvel::Application3D {
public:
    explicit SlowFrames(GLFWwindow* w) { window = w; }

    bool updateView() override
    {
        stepSeen.push_back(getMoveStep());
        if (frames < static_cast<int>(keysPerFrame.size())) {
            for (int k = 0; k < keysPerFrame[frames]; ++k) {
                manageKey(nullptr, GLFW_KEY_F5, 0, GLFW_REPEAT, 0);
            }
        }
        std::this_thread::sleep_for(frameTime);
        if (++frames == static_cast<int>(keysPerFrame.size()) + 1) {
            glfwSetWindowShouldClose(window, GLFW_TRUE);
        }
        return Application3D::updateView();
    }

    using Application3D::updateWorld;
    bool updateWorld(float elapsed) override
    {
        elapsedSeen.push_back(elapsed);
        keysSeen.push_back(getKeyEventCount());
        return true;
    }

    std::vector<int> keysPerFrame;
    std::chrono::milliseconds frameTime{0};
    int frames = 0;
    std::vector<float> stepSeen;
    std::vector<float> elapsedSeen;
    std::vector<int> keysSeen;
};

TEST(FrameLoopGLTest, SlowFramesUpdateOnceEachAndTheStepFollowsTheKeyRate)
{
    if (std::getenv("DISPLAY") == nullptr || glfwInit() == GLFW_FALSE) {
        GTEST_SKIP() << "needs a display";
    }
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    GLFWwindow* window = glfwCreateWindow(64, 64, "loop", nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    glfwMakeContextCurrent(window);

    SlowFrames frame(window);
    frame.setWorld(new korvel::World());
    // Frames of 60 ms against 20 updates a second: every frame is late.
    frame.setUpdateFrequency(20.0f);
    frame.frameTime = std::chrono::milliseconds(60);
    frame.keysPerFrame = {0, 1, 2, 4, 8, 0};
    CaptureStdout quiet;
    EXPECT_TRUE(frame.loop());
    quiet.restore();

    const std::size_t frames = frame.keysPerFrame.size() + 1;
    ASSERT_EQ(frame.elapsedSeen.size(), frames);
    float step = 0.2f;
    for (std::size_t i = 0; i < frames; ++i) {
        EXPECT_GE(frame.elapsedSeen[i], 0.055f) << i;  // the real time, not a fixed period
        EXPECT_LT(frame.elapsedSeen[i], 2.0f) << i;
        const int keys = i < frame.keysPerFrame.size() ? frame.keysPerFrame[i] : 0;
        EXPECT_EQ(frame.keysSeen[i], keys) << i;  // counted since the previous update only
        EXPECT_FLOAT_EQ(frame.stepSeen[i], step) << i;
        step = korvel::Application3D::followKeyRate(static_cast<float>(keys) / frame.elapsedSeen[i], step);
    }
    EXPECT_FLOAT_EQ(frame.getMoveStep(), 0.2f);  // no key in the last period

    glfwDestroyWindow(window);
    glfwTerminate();
}

}  // namespace
