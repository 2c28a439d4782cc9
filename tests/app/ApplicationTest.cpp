// The frame's steps that need no window: path resolution, log, configuration,
// key handling on the camera, and the input routing's refusals.

#include "app/Application3D.h"
#include "app/ApplicationManager3D.h"
#include "core/Matrix4D.h"
#include "scene/ModelManager.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace {

class TempDir {
public:
    TempDir()
    {
        char pattern[] = "/tmp/quorbane-frame-XXXXXX";
        path = std::string(mkdtemp(pattern)) + "/";
    }
    ~TempDir()
    {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    void write(const std::string& name, const std::string& text) const
    {
        fs::create_directories(fs::path(path + name).parent_path());
        std::ofstream(path + name) << text;
    }
    std::string path;
};

// Opens the protected configuration queries to the tests.
class Frame : public korvel::Application3D {
public:
    using Application3D::hasConfigAttribute;
    using Application3D::readConfigInt;
    void presetPath(const std::string& p) { path = p; }
};

int countOf(const std::string& text, const std::string& part)
{
    int count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

TEST(ApplicationTest, PathDefinitionTakesRelativeBeforeAbsoluteAndIgnoresFilesWithNeither)
{
    TempDir dir;
    Frame frame;
    std::string result = "untouched";
    CaptureStdout out;

    EXPECT_FALSE(frame.findPathDefinition(dir.path, result));
    EXPECT_EQ(result, "untouched");

    dir.write("path.def", "<Path>\n<Other>x/</Other>\n</Path>\n");
    EXPECT_FALSE(frame.findPathDefinition(dir.path, result));
    EXPECT_EQ(result, "untouched");

    dir.write("path.def", "<Path>\r\n<Absolute>/opt/quorbane/data/</Absolute>\r\n</Path>\r\n");
    EXPECT_TRUE(frame.findPathDefinition(dir.path, result));
    EXPECT_EQ(result, "/opt/quorbane/data/");

    dir.write("path.def", "<Path><Absolute>/abs/</Absolute><Relative>data/</Relative></Path>");
    EXPECT_TRUE(frame.findPathDefinition(dir.path, result));
    EXPECT_EQ(result, dir.path + "data/");

    // Taken as written, but a missing final separator is pointed out.
    out.clear();
    dir.write("path.def", "<Path><Relative>data</Relative></Path>");
    EXPECT_TRUE(frame.findPathDefinition(dir.path, result));
    EXPECT_EQ(result, dir.path + "data");
    EXPECT_NE(out.text().find("[Warning] path.def directory does not end with '/': " + dir.path + "data\n"),
              std::string::npos);

    dir.write("path.def", "");
    result = "untouched";
    EXPECT_FALSE(frame.findPathDefinition(dir.path, result));
    EXPECT_EQ(result, "untouched");
}

TEST(ApplicationTest, PresetPathIsKeptWithoutSearchingAndReachesWorldAndModels)
{
    Frame frame;
    auto* world = new korvel::World();
    frame.setWorld(world);
    frame.presetPath("/preset/data/");
    CaptureStdout out;
    EXPECT_TRUE(frame.initPath());
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(frame.getPath(), "/preset/data/");
    EXPECT_EQ(world->getPath(), "/preset/data/");
    EXPECT_EQ(korvel::ModelManager::getInstance()->getPath(), "/preset/data/");
}

TEST(ApplicationTest, LogTakesOverStandardOutputUntilEndLog)
{
    TempDir dir;
    CaptureStdout console;
    std::string logName;
    {
        Frame frame;
        EXPECT_FALSE(frame.endLog());
        frame.presetPath(dir.path);
        frame.setApplicationName("Probe");
        EXPECT_TRUE(frame.initLog());
        std::cout << "[information] a line for the file" << std::endl;
        EXPECT_TRUE(frame.endLog());
        std::smatch name;
        const std::string text = console.text();
        ASSERT_TRUE(std::regex_search(
            text, name,
            std::regex("\\[information\\] log is now directed to file (.*(Probe_\\d{4}_\\d{2}_\\d{2}_\\d{2}-\\d{2}-\\d{2}\\.log))\n")))
            << text;
        EXPECT_EQ(name[1].str(), dir.path + name[2].str());
        logName = name[1];
    }
    EXPECT_EQ(countOf(console.text(), "a line for the file"), 0);
    std::ifstream in(logName);
    std::stringstream content;
    content << in.rdbuf();
    EXPECT_EQ(content.str(),
              "[information] Start logging events on 'out' flow stream\n[information] a line for the file\n"
              "[information] End logging events\n");
}

TEST(ApplicationTest, ConfigurationIsOptionalAndItsQueriesKeepDefaultsOnBadValues)
{
    TempDir dir;
    Frame frame;
    frame.presetPath(dir.path);
    CaptureStdout out;
    EXPECT_FALSE(frame.initConfig());
    EXPECT_EQ(frame.getConfiguration(), nullptr);
    int value = 7;
    EXPECT_FALSE(frame.readConfigInt("View", "Width", value));
    EXPECT_FALSE(frame.hasConfigAttribute("Picking", "Verbose"));

    dir.write("config.def",
              "<View>\n<Width>1280</Width>\n<Height>wide</Height>\n</View>\n<Picking><Verbose></Verbose></Picking>\n");
    out.clear();
    EXPECT_TRUE(frame.initConfig());
    ASSERT_NE(frame.getConfiguration(), nullptr);
    // The configuration is dumped so every log records what the run used.
    EXPECT_NE(out.text().find("<View>\n<Width>1280\n</Width>\n"), std::string::npos) << out.text();

    EXPECT_TRUE(frame.readConfigInt("View", "Width", value));
    EXPECT_EQ(value, 1280);
    out.clear();
    value = 7;
    EXPECT_FALSE(frame.readConfigInt("View", "Height", value));
    EXPECT_EQ(value, 7);
    EXPECT_EQ(out.text(), "[Warning] configuration View Height is not an integer, default value kept\n");
    EXPECT_FALSE(frame.readConfigInt("View", "Start", value));
    EXPECT_FALSE(frame.readConfigInt("Models", "Verbose", value));
    // Presence is all a switch needs, whatever its value.
    EXPECT_TRUE(frame.hasConfigAttribute("Picking", "Verbose"));
    EXPECT_FALSE(frame.hasConfigAttribute("Memory", "Verbose"));
}

TEST(ApplicationTest, KeysMoveTheCameraAndEveryEventWritesThePosition)
{
    Frame frame;
    auto* world = new korvel::World();
    frame.setWorld(world);
    CaptureStdout out;

    frame.manageKey(nullptr, GLFW_KEY_Z, 0, GLFW_PRESS, 0);
    EXPECT_FLOAT_EQ(world->getView().getPosition().z, 0.2f);
    EXPECT_FLOAT_EQ(world->getPosition().z, -0.2f);
    frame.manageKey(nullptr, GLFW_KEY_Z, 0, GLFW_RELEASE, 0);  // a tap moves twice
    EXPECT_FLOAT_EQ(world->getView().getPosition().z, 0.4f);
    frame.manageKey(nullptr, GLFW_KEY_S, 0, GLFW_REPEAT, 0);
    EXPECT_FLOAT_EQ(world->getView().getPosition().z, 0.2f);

    frame.manageKey(nullptr, GLFW_KEY_RIGHT, 0, GLFW_PRESS, 0);
    EXPECT_GT(world->getCameraDirection().x, 0.0f);  // turned to the right
    frame.manageKey(nullptr, GLFW_KEY_LEFT, 0, GLFW_PRESS, 0);
    EXPECT_NEAR(world->getCameraDirection().x, 0.0f, 1e-6f);
    frame.manageKey(nullptr, GLFW_KEY_UP, 0, GLFW_PRESS, 0);
    EXPECT_LT(world->getCameraDirection().y, 0.0f);  // the nose goes down, as with a flight stick
    frame.manageKey(nullptr, GLFW_KEY_DOWN, 0, GLFW_PRESS, 0);
    EXPECT_NEAR(world->getCameraDirection().y, 0.0f, 1e-6f);

    // Selection keys and model browsing with nothing to act on, an unbound
    // key, and Escape without a window: nothing happens but the position line.
    for (int key : {GLFW_KEY_PAGE_UP, GLFW_KEY_PAGE_DOWN, GLFW_KEY_DELETE, GLFW_KEY_KP_ADD, GLFW_KEY_KP_SUBTRACT,
                    GLFW_KEY_P, GLFW_KEY_M, GLFW_KEY_F5, GLFW_KEY_ESCAPE}) {
        frame.manageKey(nullptr, key, 0, GLFW_PRESS, 0);
    }
    EXPECT_FLOAT_EQ(world->getView().getPosition().z, 0.2f);

    frame.manageKey(nullptr, GLFW_KEY_O, 0, GLFW_PRESS, 0);
    const Vector4D spawn = world->getView().getPosition();
    EXPECT_FLOAT_EQ(spawn.x, 0.0f);
    EXPECT_FLOAT_EQ(spawn.y, 0.0f);
    EXPECT_FLOAT_EQ(spawn.z, 0.0f);
    EXPECT_FLOAT_EQ(spawn.w, 1.0f);

    EXPECT_EQ(frame.getKeyEventCount(), 17);
    EXPECT_EQ(countOf(out.text(), "[information] Position in world: "), 17);
    EXPECT_NE(out.text().find("[information] Position in world: \tv[0]= 0\tv[1]= 0\tv[2]= 0.2\tv[3]= 1\n"),
              std::string::npos)
        << out.text();
}

TEST(ApplicationTest, MoveStepFollowsTheKeyRateInStages)
{
    struct Case {
        float keyRate;
        float before;
        float after;
    };
    const Case cases[] = {{0.0f, 5.0f, 0.2f},  {0.5f, 0.2f, 1.0f},  {30.0f, 0.2f, 1.0f}, {30.5f, 1.0f, 5.0f},
                          {70.0f, 1.0f, 5.0f}, {70.5f, 1.0f, 1.0f}, {500.0f, 5.0f, 5.0f}};
    for (const Case& c : cases) {
        EXPECT_FLOAT_EQ(korvel::Application3D::followKeyRate(c.keyRate, c.before), c.after) << c.keyRate;
    }
}

TEST(ApplicationTest, RoutingRefusesNullWindowsAndApplicationsAndDropsUnknownWindows)
{
    Frame frame;
    korvel::ApplicationManager3D* manager = korvel::ApplicationManager3D::getInstance();
    EXPECT_EQ(manager, korvel::ApplicationManager3D::getInstance());
    auto* stranger = reinterpret_cast<GLFWwindow*>(&frame);
    CaptureStdout out;
    EXPECT_FALSE(manager->syndicateWindow(nullptr, &frame));
    EXPECT_FALSE(manager->syndicateWindow(stranger, nullptr));
    korvel::ApplicationManager3D::manageKeyCallback(stranger, GLFW_KEY_Z, 0, GLFW_PRESS, 0);
    korvel::ApplicationManager3D::manageMouseButtonCallback(stranger, 0, GLFW_PRESS, 0);
    korvel::ApplicationManager3D::manageCursorPosCallback(stranger, 1.0, 2.0);
    korvel::ApplicationManager3D::manageScrollCallback(stranger, 0.0, 1.0);
    EXPECT_EQ(out.text(),
              "[Error] syndication of NULL window\n"
              "[Error] syndication of NULL application\n"
              "[Error] Key callback application not available\n"
              "[Error] Mouse Button callback application not available\n"
              "[Error] Cursor Position callback application not available\n"
              "[Error] scroll callback application not available\n");
    EXPECT_EQ(frame.getKeyEventCount(), 0);
}

}  // namespace
