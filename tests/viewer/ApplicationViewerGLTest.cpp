// The model viewer started in this process on the game's data: what it shows
// is registered in the world and drawn by the world's own frame, and the
// programs made after the world's setup already hold the world's values.

#include "viewer/ApplicationViewer.h"

#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "scene/IHandler3D.h"
#include "scene/ModelManager.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

// The game's data, the console for a log.
class Viewer : public korvel::ApplicationViewer {
public:
    bool initPath() override
    {
        // KORVEL_TEST_DATA is <repository>/tests/viewer/data/, which need not exist.
        setPath((std::filesystem::path(KORVEL_TEST_DATA) / "../../../data/").lexically_normal().string());
        return true;
    }
    bool initLog() override { return true; }
};

std::vector<std::string> names(const korvel::World& world)
{
    std::vector<std::string> result;
    for (const auto& entry : world.getElements()) {
        result.push_back(entry.first);
    }
    return result;
}

// How many pixels of the rectangle differ from the clear colour.
int drawnPixels(int x, int y, int w, int h)
{
    std::vector<unsigned char> pixels(static_cast<std::size_t>(w * h * 4));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, w, h, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    GLfloat clear[4] = {};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, clear);
    int drawn = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        for (int c = 0; c < 3; ++c) {
            // A few steps of 255 for the rounding of the clear colour.
            if (std::abs(pixels[i + c] - clear[c] * 255.0f) > 3.0f) {
                ++drawn;
                break;
            }
        }
    }
    return drawn;
}

TEST(ApplicationViewerGLTest, TheModelAndTheTextAreWorldElementsDrawnByTheWorld)
{
    {
        Viewer viewer;
        CaptureStdout log;
        ASSERT_TRUE(viewer.init()) << log.text();
        korvel::World& world = *viewer.getWorld();
        ASSERT_EQ(names(world), (std::vector<std::string>{"model", "text-help", "text-info"})) << log.text();

        // The text's program was made after the world's setup and has the
        // world's projection before any update has run.
        auto* text = dynamic_cast<ShaderProgramBase*>(korvel::ShaderProgramManager::getInstance()->getProgram("Text"));
        ASSERT_NE(text, nullptr);
        using GetUniform = void (*)(GLuint, GLint, GLfloat*);
        auto getUniform = reinterpret_cast<GetUniform>(glfwGetProcAddress("glGetUniformfv"));
        ASSERT_NE(getUniform, nullptr);
        GLfloat projection[16] = {};
        getUniform(text->getProgramRaw(), text->getProjectionLocation(), projection);
        for (int i = 0; i < 16; ++i) {
            EXPECT_FLOAT_EQ(projection[i], world.getProjection().m[i]) << i;
        }

        // One frame of the frame's own: the model in the middle, the text
        // in the upper left corner (rows count from the bottom here).
        viewer.updateView();
        const int w = viewer.getWidth();
        const int h = viewer.getHeight();
        EXPECT_GT(drawnPixels(w / 2 - 20, h / 2 - 20, 40, 40), 800);
        EXPECT_GT(drawnPixels(0, h - h / 8, w / 5, h / 8), 200);
        EXPECT_EQ(drawnPixels(w - w / 5, h - h / 8, w / 5, h / 8), 0);

        // The next model takes the place of the one shown (compared by name:
        // a new clone may well sit where the old one was).
        korvel::ModelManager* models = korvel::ModelManager::getInstance();
        const std::string first = models->getCurrentModelName();
        viewer.manageKey(viewer.getWindow(), GLFW_KEY_P, 0, GLFW_PRESS, 0);
        EXPECT_EQ(names(world), (std::vector<std::string>{"model", "text-help", "text-info"}));
        EXPECT_NE(models->getCurrentModelName(), first);
        auto* shown = dynamic_cast<korvel::IHandler3D*>(world.getElement("model"));
        ASSERT_NE(shown, nullptr);
        EXPECT_NE(shown->getCurrent(), nullptr);
        EXPECT_EQ(world.getPlainLeaves().size(), 1u);  // the one just shown
        glfwDestroyWindow(viewer.getWindow());
    }
    // The world went with the viewer, clones first: the models can go.
    korvel::ModelManager::getInstance()->cleanUp();
}

}  // namespace
