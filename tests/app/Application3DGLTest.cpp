// The frame on a real (hidden) window: the loop's world updates follow the
// real elapsed time and the camera step follows the key rate of the last
// period; the window's callbacks reach the application last syndicated with it.

#include "app/Application3D.h"
#include "app/ApplicationManager3D.h"
#include "support/GLContextFixture.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <chrono>
#include <thread>
#include <vector>

namespace {

class Application3DGLTest : public GLContextFixture {};

// Every frame takes 60 ms and sends its share of key events; the window
// closes after the last.
class SlowFrames : public korvel::Application3D {
public:
    explicit SlowFrames(GLFWwindow* w) { window = w; }

    bool updateView() override
    {
        for (int k = 0; k < keysPerFrame[frames]; ++k) {
            manageKey(nullptr, GLFW_KEY_F5, 0, GLFW_REPEAT, 0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(60));
        glfwSetWindowShouldClose(window, ++frames == keysPerFrame.size() ? GLFW_TRUE : GLFW_FALSE);
        return Application3D::updateView();
    }
    using Application3D::updateWorld;
    bool updateWorld(float elapsed) override
    {
        seen.push_back({elapsed, getKeyEventCount(), getMoveStep()});
        return true;
    }

    struct Update {
        float elapsed;
        int keys;
        float step;
    };
    const std::vector<int> keysPerFrame = {0, 1, 2, 4, 8, 0, 0};
    std::size_t frames = 0;
    std::vector<Update> seen;
};

TEST_F(Application3DGLTest, SlowFramesUpdateOnceEachAndTheStepFollowsTheKeyRate)
{
    SlowFrames frame(window);
    frame.setWorld(new korvel::World());
    frame.setUpdateFrequency(20.0f);  // every 60 ms frame is late
    CaptureStdout quiet;
    EXPECT_TRUE(frame.loop());
    quiet.restore();

    ASSERT_EQ(frame.seen.size(), frame.keysPerFrame.size());
    float step = 0.2f;
    for (std::size_t i = 0; i < frame.seen.size(); ++i) {
        const SlowFrames::Update& update = frame.seen[i];
        EXPECT_GE(update.elapsed, 0.055f) << i;  // the real time, not a fixed period
        EXPECT_LT(update.elapsed, 2.0f) << i;
        EXPECT_EQ(update.keys, frame.keysPerFrame[i]) << i;  // counted since the previous update only
        EXPECT_FLOAT_EQ(update.step, step) << i;
        step = korvel::Application3D::followKeyRate(static_cast<float>(update.keys) / update.elapsed, step);
    }
    EXPECT_FLOAT_EQ(frame.getMoveStep(), 0.2f);  // no key in the last period
}

class Recorder : public korvel::Application3D {
public:
    void manageKey(GLFWwindow*, int key, int, int, int) override { lastKey = key; }
    int lastKey = -1;
};

TEST_F(Application3DGLTest, ASecondSyndicationRoutesTheWindowToTheSecondApplication)
{
    Recorder first;
    Recorder second;
    korvel::ApplicationManager3D* manager = korvel::ApplicationManager3D::getInstance();
    ASSERT_TRUE(manager->syndicateWindow(window, &first));
    ASSERT_TRUE(manager->syndicateWindow(window, &second));
    EXPECT_EQ(glfwSetKeyCallback(window, nullptr), &korvel::ApplicationManager3D::manageKeyCallback);
    korvel::ApplicationManager3D::manageKeyCallback(window, GLFW_KEY_Z, 0, GLFW_PRESS, 0);
    EXPECT_EQ(second.lastKey, GLFW_KEY_Z);
    EXPECT_EQ(first.lastKey, -1);
}

}  // namespace
