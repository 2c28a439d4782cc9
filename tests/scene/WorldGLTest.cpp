// The world feeds its camera, projection and fog into real programs, and only
// re-sends what a changed flag asks for. Values are read back from the driver.

#include "core/Matrix4D.h"
#include "render/GLBaseStructure.h"
#include "render/OpenGLError.h"
#include "render/Shader.h"
#include "render/ShaderProgram.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManager.h"
#include "render/ShaderProgramManagerBase.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <GLFW/glfw3.h>
#include <gtest/gtest.h>

#include <GL/gl.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using GetUniformfv = void (*)(unsigned, int, float*);

std::string repositoryShaders()
{
    // KORVEL_TEST_DATA is <repository>/tests/scene/data/.
    namespace fs = std::filesystem;
    return fs::path(KORVEL_TEST_DATA).parent_path().parent_path().parent_path().parent_path().string() +
           "/data/Shaders/";
}

class WorldGLTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (std::getenv("DISPLAY") == nullptr || glfwInit() == GLFW_FALSE) {
            GTEST_SKIP() << "needs a display";
        }
        glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
        window = glfwCreateWindow(64, 64, "world", nullptr, nullptr);
        ASSERT_NE(window, nullptr);
        glfwMakeContextCurrent(window);
        ASSERT_TRUE(Shader::init() && ShaderProgram::init() && OpenGLError::init() && GLBaseStructure::init() &&
                    korvel::ShaderProgramManagerBase::init());
        getUniformfv = reinterpret_cast<GetUniformfv>(glfwGetProcAddress("glGetUniformfv"));
        ASSERT_NE(getUniformfv, nullptr);
        korvel::ShaderProgramManager::getInstance()->setPath(repositoryShaders());
    }
    void TearDown() override
    {
        if (window != nullptr) {
            glfwDestroyWindow(window);
        }
    }

    float uniform(ShaderProgramBase* program, int location, int index = 0)
    {
        float values[16] = {};
        getUniformfv(program->getProgramRaw(), location, values);
        return values[index];
    }

    GLFWwindow* window = nullptr;
    GetUniformfv getUniformfv = nullptr;
};

TEST_F(WorldGLTest, SetupFeedsEveryProgramAndUpdatesResendOnlyWhatChanged)
{
    korvel::ShaderProgramManager* manager = korvel::ShaderProgramManager::getInstance();
    CaptureStdout quiet;
    auto* wood = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Wood"));
    auto* laser = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Laser"));
    quiet.restore();
    ASSERT_NE(wood, nullptr);
    ASSERT_NE(laser, nullptr);

    korvel::World world;
    EXPECT_TRUE(world.isSelectionDisabled());
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    world.moveIn(-4.0f);
    EXPECT_TRUE(world.setup());
    EXPECT_FALSE(world.isSelectionDisabled());  // "Laser" exists

    for (ShaderProgramBase* program : {wood, laser}) {
        for (int i = 0; i < 16; ++i) {
            EXPECT_FLOAT_EQ(uniform(program, program->getProjectionLocation(), i), world.getProjection().m[i]);
            EXPECT_FLOAT_EQ(uniform(program, program->getModelviewLocation(), i), world.getView().m[i]);
        }
    }
    // Setup ends with the last program of the walk current, through the manager.
    EXPECT_EQ(manager->getCurrentProgram(), manager->getPrograms().rbegin()->second);

    // The camera moves: the view is re-sent at the next update.
    world.moveIn(1.5f);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getModelviewLocation(), 14), world.getView().m[14]);

    // The projection is sent again only when a scene setter asked for it.
    wood->use();
    const float poisoned[16] = {};
    ShaderProgram::uniformMatrix4fv(wood->getProjectionLocation(), 1, 0, poisoned);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getProjectionLocation(), 0), 0.0f);
    world.setFogStart(7.0f);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getProjectionLocation(), 0), world.getProjection().m[0]);
    if (wood->getFogStartLocation() != -1) {
        EXPECT_FLOAT_EQ(uniform(wood, wood->getFogStartLocation()), 7.0f);
    }

    // Drawing an empty scene leaves blending off.
    world.draw();
    EXPECT_EQ(glIsEnabled(GL_BLEND), GL_FALSE);
}

}  // namespace
