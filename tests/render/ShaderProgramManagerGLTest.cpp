#include "GLContextFixture.h"
#include "support/CaptureStdout.h"

#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "render/ShaderVertex.h"

#include <string>

namespace {

const std::string fixtures = std::string(KORVEL_TEST_DATA) + "manager/";
// The programs the game ships, from the repository's data folder.
const std::string shipped = std::string(KORVEL_TEST_DATA) + "../../../data/Shaders/";

class ShaderProgramManagerGLTest : public GLContextFixture {};

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(ShaderProgramManagerGLTest, SingletonIsMadeOnceByInit)
{
    korvel::ShaderProgramManager::releaseInstance();
    EXPECT_EQ(korvel::ShaderProgramManager::getInstance(), nullptr);
    EXPECT_TRUE(korvel::ShaderProgramManagerBase::init());
    korvel::ShaderProgramManager* first = korvel::ShaderProgramManager::getInstance();
    ASSERT_NE(first, nullptr);
    EXPECT_STREQ(first->getInstanceClassName(), "ShaderProgramManagerBase");
    EXPECT_TRUE(korvel::ShaderProgramManagerBase::init());
    EXPECT_EQ(korvel::ShaderProgramManager::getInstance(), first);
    korvel::ShaderProgramManager::releaseInstance();
}

// What the application does at start: the shader directory, then the seven
// programs it preloads.
TEST_F(ShaderProgramManagerGLTest, EveryShippedProgramLoadsWithoutError)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(shipped);
    for (const char* name : {"Wood", "Soil", "Hull", "Explosion", "Selection", "Laser", "Leaf"}) {
        CaptureStdout out;
        ShaderProgram* program = manager.getProgram(name);
        const std::string text = out.text();
        out.restore();
        ASSERT_NE(program, nullptr) << name << "\n" << text;
        EXPECT_NE(dynamic_cast<ShaderProgramBase*>(program), nullptr);
        EXPECT_EQ(program->codeName, name);
        EXPECT_FALSE(has(text, "[ERROR]") || has(text, "[Error]")) << name << "\n" << text;
        // Each uses every optional uniform but the texture sampler (they are
        // procedural), so an object's age never prints the missing-time line.
        EXPECT_FALSE(has(text, "binding of time elapse failed")) << name;
        EXPECT_FALSE(has(text, "binding of attribute")) << name << "\n" << text;
        auto* base = static_cast<ShaderProgramBase*>(program);
        for (int location : {base->getLightLocation(), base->getCameraLocation(), base->getPhongLocation(),
                             base->getFogColorLocation(), base->getFogStartLocation(), base->getFogEndLocation(),
                             base->getTimeLocation()}) {
            EXPECT_NE(location, -1) << name;
        }
    }
    // The game's own programs.
    for (const char* name : {"MapTextured", "Text", "Fusion"}) {
        CaptureStdout out;
        ShaderProgram* program = manager.getProgram(name);
        const std::string text = out.text();
        out.restore();
        ASSERT_NE(program, nullptr) << name << "\n" << text;
        EXPECT_FALSE(has(text, "[ERROR]") || has(text, "[Error]")) << name << "\n" << text;
        EXPECT_FALSE(has(text, "binding of attribute")) << name << "\n" << text;
        EXPECT_NE(static_cast<ShaderProgramBase*>(program)->getTimeLocation(), -1) << name;
    }
    EXPECT_NE(static_cast<ShaderProgramBase*>(manager.getProgram("MapTextured"))->getTextureSamplerLocation(), -1);
    EXPECT_NE(static_cast<ShaderProgramBase*>(manager.getProgram("Text"))->getTextureSamplerLocation(), -1);
    EXPECT_EQ(manager.getPrograms().size(), 10u);
}

TEST_F(ShaderProgramManagerGLTest, MissingSourcesFailOnceAndAreNotRetried)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(fixtures);
    CaptureStdout out;
    EXPECT_EQ(manager.getProgram("Nowhere"), nullptr);
    EXPECT_EQ(out.text(), "[Warning] unable to open shader definition file\n"
                          "[ERROR] unable to open source file\n"
                          "[ERROR] Shader program not loadable !\n");
    out.clear();
    EXPECT_EQ(manager.getProgram("Nowhere"), nullptr);
    EXPECT_EQ(out.text(), "");
    ASSERT_EQ(manager.getPrograms().count("Nowhere"), 1u);
    EXPECT_EQ(manager.getPrograms().at("Nowhere"), nullptr);

    // A definition naming a missing file falls back to the raw pair, which
    // is missing too.
    out.clear();
    EXPECT_EQ(manager.getProgram("Dangling"), nullptr);
    EXPECT_EQ(out.text(), "[Information] tag being parsed: vertex\n"
                          "[Information] tag being parsed: file\n"
                          "[Information] tag being parsed: fragment\n"
                          "[Information] tag being parsed: file\n"
                          "[Information] file name: " + fixtures + "/missing.vert\n"
                          "[ERROR] unable to open source file\n"
                          "[ERROR] unable to open source file\n"
                          "[ERROR] Shader program not loadable !\n");

    out.clear();
    EXPECT_EQ(manager.getProgram("NoInclude"), nullptr);
    EXPECT_TRUE(has(out.text(), "[Error] preprocessing cannot find include file: absent.glsl\n")) << out.text();
    EXPECT_TRUE(has(out.text(), "[ERROR] Shader program not loadable !\n"));
}

TEST_F(ShaderProgramManagerGLTest, BrokenShaderIsNotMakable)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(fixtures);
    CaptureStdout out;
    EXPECT_EQ(manager.getProgram("Broken"), nullptr);
    const std::string text = out.text();
    const auto compile = text.find("[ERROR] Failed to compile fragment shader\n[ERROR] OPENGL ERROR type shader: ");
    const auto stage = text.find("[Error] failed to make fragment shader\n");
    const auto refused = text.find("[ERROR] Shader program not makable !\n");
    EXPECT_NE(compile, std::string::npos) << text;
    EXPECT_LT(compile, stage);
    EXPECT_LT(stage, refused);
    EXPECT_NE(refused, std::string::npos);
}

TEST_F(ShaderProgramManagerGLTest, DefinitionWinsOverRawFilesAndExpandsIncludes)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(fixtures);
    manager.setVerbose(true);
    CaptureStdout out;
    ShaderProgram* both = manager.getProgram("Both");
    const std::string text = out.text();
    out.restore();
    ASSERT_NE(both, nullptr) << text;
    EXPECT_TRUE(both->isVerbose);
    EXPECT_TRUE(has(text, "[Information] creating program for Both\n"));
    EXPECT_TRUE(has(text, "[Information] file for definition source: " + fixtures + "shaderBoth.gdef\n"));
    EXPECT_TRUE(has(text, "[Information] vertex is being processed\n"));
    EXPECT_TRUE(has(text, "[Information] fragment is being processed\n"));
    EXPECT_FALSE(has(text, "shaderVBoth.glsl"));
    const std::string& fragment = both->getFragment()->getSource();
    EXPECT_FALSE(has(fragment, "#include"));
    EXPECT_TRUE(has(fragment, "vec3 includedColour(vec2 uv)\n"));
    EXPECT_TRUE(has(text, "[Information] source after processing:\n"));
}

TEST_F(ShaderProgramManagerGLTest, UseProgramSkipsTheProgramAlreadyCurrent)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(fixtures);
    ShaderProgram* raw = nullptr;
    {
        CaptureStdout out;
        raw = manager.getProgram("Raw");
        EXPECT_TRUE(has(out.text(), "[Warning] unable to open shader definition file\n"));
    }
    ASSERT_NE(raw, nullptr);
    manager.useProgram(raw);
    EXPECT_EQ(currentProgram(), static_cast<GLint>(raw->getProgramRaw()));
    EXPECT_EQ(manager.getCurrentProgram(), raw);

    // The cache survives an unUse: asking again for the same program issues
    // no GL call, so nothing is bound.
    raw->unUse();
    manager.useProgram(raw);
    EXPECT_EQ(currentProgram(), 0);

    CaptureStdout out;
    manager.dump();
    EXPECT_TRUE(has(out.text(), "path: " + fixtures + "\nisVerbose: 0\ncode Shader: Raw\nShader: \nprogram: "));
    EXPECT_TRUE(has(out.text(), "codeName: Raw\nprojectMatrixLoc: "));
}

}  // namespace
