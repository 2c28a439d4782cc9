// The world feeds its camera and projection into real programs, and re-sends
// the projection only when a scene setter asked for it. Values are read back
// from the driver.

#include "support/GLContextFixture.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "scene/World.h"
#include "support/CaptureStdout.h"

#include <filesystem>

namespace {

using GetUniformfv = void (*)(unsigned, int, float*);

class WorldGLTest : public GLContextFixture {};

TEST_F(WorldGLTest, SetupFeedsEveryProgramAndUpdatesResendOnlyWhatChanged)
{
    ASSERT_TRUE(korvel::ShaderProgramManagerBase::init());
    const auto getUniformfv = reinterpret_cast<GetUniformfv>(glfwGetProcAddress("glGetUniformfv"));
    auto uniform = [&](ShaderProgramBase* program, int location, int index) {
        float values[16] = {};
        getUniformfv(program->getProgramRaw(), location, values);
        return values[index];
    };

    korvel::ShaderProgramManager* manager = korvel::ShaderProgramManager::getInstance();
    // KORVEL_TEST_DATA is <repository>/tests/scene/data/, which need not exist.
    manager->setPath((std::filesystem::path(KORVEL_TEST_DATA) / "../../../data/Shaders/").lexically_normal().string());
    CaptureStdout quiet;
    auto* wood = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Wood"));
    auto* laser = dynamic_cast<ShaderProgramBase*>(manager->getProgram("Laser"));
    quiet.restore();
    ASSERT_TRUE(wood != nullptr && laser != nullptr);

    korvel::World world;
    world.setProjection(0.7853982f, 800, 600, 1.0f, 100.0f);
    world.moveIn(-4.0f);
    EXPECT_TRUE(world.setup());
    for (ShaderProgramBase* program : {wood, laser}) {
        for (int i = 0; i < 16; ++i) {
            EXPECT_FLOAT_EQ(uniform(program, program->getProjectionLocation(), i), world.getProjection().m[i]);
            EXPECT_FLOAT_EQ(uniform(program, program->getModelviewLocation(), i), world.getView().m[i]);
        }
    }

    // The camera moves: the view is re-sent at the next update.
    world.moveIn(1.5f);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getModelviewLocation(), 14), world.getView().m[14]);

    // The projection is re-sent only once a scene setter asked for it.
    wood->use();
    const float poisoned[16] = {};
    ShaderProgram::uniformMatrix4fv(wood->getProjectionLocation(), 1, 0, poisoned);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getProjectionLocation(), 0), 0.0f);
    world.setFogStart(7.0f);
    world.update();
    EXPECT_FLOAT_EQ(uniform(wood, wood->getProjectionLocation(), 0), world.getProjection().m[0]);
    EXPECT_FLOAT_EQ(uniform(wood, wood->getFogStartLocation(), 0), 7.0f);
}

}  // namespace
