// The frame on a real (hidden) window: the loop's world updates follow the
// elapsed time, at most updateFrequency a second, and the camera step follows
// the key rate of the last period; a start-up step that fails ends init with
// its line; the window's callbacks reach the application last syndicated
// with it.

#include "app/Application3D.h"
#include "app/ApplicationManager3D.h"
#include "support/GLContextFixture.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <string>
#include <vector>

namespace {

class Application3DGLTest : public GLContextFixture {};

// Runs frames on GLFW's clock, which each frame moves on by frameSeconds:
// the loop sees exactly the time it would with frames that long, whatever
// the machine's load. Sends its share of key events each frame and closes
// the window after the last.
class ClockedFrames : public korvel::Application3D {
public:
    ClockedFrames(GLFWwindow* w, float seconds, std::vector<int> keys) : frameSeconds(seconds), keysPerFrame(keys)
    {
        window = w;
        glfwSetWindowShouldClose(w, GLFW_FALSE);  // an earlier loop left it closing
    }

    bool updateView() override
    {
        for (int k = 0; k < keysPerFrame[frames]; ++k) {
            manageKey(nullptr, GLFW_KEY_F5, 0, GLFW_REPEAT, 0);
        }
        glfwSetTime(glfwGetTime() + frameSeconds);
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
    const double frameSeconds;
    const std::vector<int> keysPerFrame;
    std::size_t frames = 0;
    std::vector<Update> seen;
};

TEST_F(Application3DGLTest, SlowFramesUpdateOnceEachAndTheStepFollowsTheKeyRate)
{
    // 60 ms frames, 20 updates a second at most: every frame is late. About
    // 16.7 frames a second, so 1 key gives a key rate near 17, 3 near 50,
    // 4 near 67 and 8 near 133.
    ClockedFrames frame(window, 0.06f, {0, 1, 3, 4, 8, 0, 0});
    frame.setWorld(new korvel::World());
    frame.setUpdateFrequency(20.0f);
    CaptureStdout quiet;
    EXPECT_TRUE(frame.loop());
    quiet.restore();

    // The step each update finds, set by the key rate of the period before.
    const float steps[] = {0.2f, 0.2f, 1.0f, 5.0f, 5.0f, 5.0f, 0.2f};
    ASSERT_EQ(frame.seen.size(), frame.keysPerFrame.size());
    for (std::size_t i = 0; i < frame.seen.size(); ++i) {
        const ClockedFrames::Update& update = frame.seen[i];
        EXPECT_GE(update.elapsed, 0.06f) << i;  // the real time, not a fixed period
        EXPECT_EQ(update.keys, frame.keysPerFrame[i]) << i;  // counted since the previous update only
        EXPECT_FLOAT_EQ(update.step, steps[i]) << i;
    }
    EXPECT_FLOAT_EQ(frame.getMoveStep(), 0.2f);  // no key in the last period
}

TEST_F(Application3DGLTest, FastFramesUpdateTheWorldAtMostUpdateFrequencyTimesASecond)
{
    // 400 frames of 5 ms: two seconds, twenty frames to an update period.
    ClockedFrames frame(window, 0.005f, std::vector<int>(400, 0));
    frame.setWorld(new korvel::World());
    frame.setUpdateFrequency(10.0f);
    const double start = glfwGetTime();
    CaptureStdout quiet;
    EXPECT_TRUE(frame.loop());
    quiet.restore();
    const double seconds = glfwGetTime() - start;

    EXPECT_LE(static_cast<double>(frame.seen.size()), seconds * 10.0);
    EXPECT_GE(frame.seen.size(), 15u);
    for (const ClockedFrames::Update& update : frame.seen) {
        EXPECT_GT(update.elapsed, 0.0999f);  // never sooner than a period
    }
}

// A frame whose GL functions cannot be found: the context is gone when it
// looks them up, which is what a missing entry point looks like to it.
class NoEntryPoints : public korvel::Application3D {
public:
    bool initPath() override
    {
        setPath(std::string(KORVEL_BINARY_DIR) + "no-data-here/");
        return true;
    }
    bool initLog() override { return true; }  // the console is the log
    bool initGraphicObject() override
    {
        glfwMakeContextCurrent(nullptr);
        return Application3D::initGraphicObject();
    }
};

TEST_F(Application3DGLTest, AMissingEntryPointStopsStartUpWithItsLine)
{
    NoEntryPoints frame;
    CaptureStdout out;
    EXPECT_FALSE(frame.init());
    const std::string text = out.text();
    out.restore();
    const std::string line = "[ERROR] unable to set GraphicObject context and init OpenGL functions\n";
    EXPECT_NE(text.find("[Success] Window created\n"), std::string::npos) << text;
    ASSERT_GE(text.size(), line.size());
    EXPECT_EQ(text.substr(text.size() - line.size() - 1), "\n" + line) << text;  // the last line
    if (frame.getWindow() != nullptr) {
        glfwDestroyWindow(frame.getWindow());
    }
}

class Recorder : public korvel::Application3D {
public:
    void manageKey(GLFWwindow*, int key, int, int, int) override { events.push_back("key " + std::to_string(key)); }
    void manageButton(GLFWwindow*, int button, int action, int mods) override
    {
        events.push_back("button " + std::to_string(button) + " " + std::to_string(action) + " " + std::to_string(mods));
    }
    void manageCursorPos(GLFWwindow*, double x, double y) override
    {
        events.push_back("cursor " + std::to_string(x) + " " + std::to_string(y));
    }
    void manageScroll(GLFWwindow*, double x, double y) override
    {
        events.push_back("scroll " + std::to_string(x) + " " + std::to_string(y));
    }
    std::vector<std::string> events;
};

TEST_F(Application3DGLTest, EveryKindOfEventReachesTheApplicationLastSyndicated)
{
    using korvel::ApplicationManager3D;
    Recorder first;
    Recorder second;
    ApplicationManager3D* manager = ApplicationManager3D::getInstance();
    ASSERT_TRUE(manager->syndicateWindow(window, &first));
    ASSERT_TRUE(manager->syndicateWindow(window, &second));
    // GLFW holds the manager's four callbacks for the window.
    EXPECT_EQ(glfwSetKeyCallback(window, nullptr), &ApplicationManager3D::manageKeyCallback);
    EXPECT_EQ(glfwSetMouseButtonCallback(window, nullptr), &ApplicationManager3D::manageMouseButtonCallback);
    EXPECT_EQ(glfwSetCursorPosCallback(window, nullptr), &ApplicationManager3D::manageCursorPosCallback);
    EXPECT_EQ(glfwSetScrollCallback(window, nullptr), &ApplicationManager3D::manageScrollCallback);

    GLFWwindow* stranger = reinterpret_cast<GLFWwindow*>(&first);  // never syndicated
    CaptureStdout out;
    for (GLFWwindow* w : {window, stranger}) {
        ApplicationManager3D::manageKeyCallback(w, GLFW_KEY_Z, 0, GLFW_PRESS, 0);
        ApplicationManager3D::manageMouseButtonCallback(w, GLFW_MOUSE_BUTTON_RIGHT, GLFW_RELEASE, GLFW_MOD_SHIFT);
        ApplicationManager3D::manageCursorPosCallback(w, 12.5, 40.25);
        ApplicationManager3D::manageScrollCallback(w, -1.0, 2.0);
    }
    EXPECT_EQ(second.events, (std::vector<std::string>{"key 90", "button 1 0 1", "cursor 12.500000 40.250000",
                                                        "scroll -1.000000 2.000000"}));
    EXPECT_TRUE(first.events.empty());
    EXPECT_EQ(out.text(), "[Error] Key callback application not available\n"
                          "[Error] Mouse Button callback application not available\n"
                          "[Error] Cursor Position callback application not available\n"
                          "[Error] scroll callback application not available\n");
    EXPECT_FALSE(manager->syndicateWindow(nullptr, &first) || manager->syndicateWindow(window, nullptr));
}

}  // namespace
