#include "support/GLContextFixture.h"
#include "support/CaptureStdout.h"

#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramManagerBase.h"
#include "render/ShaderVertex.h"

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

const std::string fixtures = std::string(KORVEL_TEST_DATA) + "manager/";
const std::string shipped = std::string(KORVEL_TEST_DATA) + "../../../data/Shaders/";

class ShaderProgramManagerGLTest : public GLContextFixture {};

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(ShaderProgramManagerGLTest, EveryShippedProgramLoadsWithoutError)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(shipped);
    // The seven the application preloads, then the game's own.
    for (const char* name : {"Wood", "Soil", "Hull", "Explosion", "Selection", "Laser", "Leaf", "MapTextured", "Text",
                             "Fusion"}) {
        CaptureStdout out;
        auto* program = dynamic_cast<ShaderProgramBase*>(manager.getProgram(name));
        const std::string text = out.text();
        out.restore();
        ASSERT_NE(program, nullptr) << name << "\n" << text;
        EXPECT_FALSE(has(text, "[ERROR]") || has(text, "[Error]") || has(text, "binding of attribute"))
            << name << "\n" << text;
        // All use the age, so an object's age never prints the missing-time line.
        EXPECT_NE(program->getTimeLocation(), -1) << name;
    }
}

TEST_F(ShaderProgramManagerGLTest, FailedProgramsAreReportedOnceAndRemembered)
{
    struct Case {
        const char* name;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"Nowhere",
         {"[Warning] unable to open shader definition file", "[ERROR] unable to open source file",
          "[ERROR] Shader program not loadable !"}},
        // The definition names a missing file: the fallback raw pair is missing too.
        {"Dangling",
         {"[Information] file name: " + fixtures + "/missing.vert", "[ERROR] unable to open source file",
          "[ERROR] unable to open source file", "[ERROR] Shader program not loadable !"}},
        {"NoInclude",
         {"[Error] preprocessing cannot find include file: absent.glsl", "[ERROR] Shader program not loadable !"}},
        {"Broken",
         {"[ERROR] Failed to compile fragment shader", "[ERROR] OPENGL ERROR type shader: ",
          "[Error] failed to make fragment shader", "[ERROR] Shader program not makable !"}},
    };
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(fixtures);
    for (const Case& c : cases) {
        CaptureStdout out;
        EXPECT_EQ(manager.getProgram(c.name), nullptr);
        const std::string text = out.text();
        std::size_t at = 0;
        for (const std::string& line : c.lines) {  // in this order
            at = text.find(line, at);
            ASSERT_NE(at, std::string::npos) << c.name << ": " << line << "\n" << text;
            at += line.size();
        }
        out.clear();
        EXPECT_EQ(manager.getProgram(c.name), nullptr);
        EXPECT_EQ(out.text(), "") << c.name;
        EXPECT_EQ(manager.getPrograms().count(c.name), 1u);
    }
}

std::string fileText(const std::string& name)
{
    std::ifstream in(name);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A definition that opens wins over the raw files; without one, the raw
// files are read as they are.
TEST_F(ShaderProgramManagerGLTest, DefinitionWinsOverRawFilesWhichServeWithoutOneAndSwitchesAreCached)
{
    korvel::ShaderProgramManagerBase manager;
    manager.setPath(fixtures);
    CaptureStdout out;
    ShaderProgram* both = manager.getProgram("Both");
    ASSERT_NE(both, nullptr) << out.text();
    EXPECT_FALSE(has(out.text(), "shaderVBoth.glsl"));  // the raw files are not GLSL
    const std::string& fragment = both->getFragment()->getSource();
    EXPECT_FALSE(has(fragment, "#include"));
    EXPECT_TRUE(has(fragment, "vec3 includedColour(vec2 uv)\n"));
    out.clear();
    ShaderProgram* raw = manager.getProgram("Raw");
    ASSERT_NE(raw, nullptr) << out.text();
    EXPECT_TRUE(has(out.text(), "[Warning] unable to open shader definition file"));
    EXPECT_FALSE(has(out.text(), "[ERROR]")) << out.text();
    EXPECT_EQ(raw->getVertex()->getSource(), fileText(fixtures + "shaderVRaw.glsl"));
    EXPECT_EQ(raw->getFragment()->getSource(), fileText(fixtures + "shaderFRaw.glsl"));

    // Only a program other than the one made current last is bound; the
    // manager does not see an unUse, so after one the same program is not
    // bound again through it.
    const GLint rawId = static_cast<GLint>(raw->getProgramRaw());
    const GLint bothId = static_cast<GLint>(both->getProgramRaw());
    manager.useProgram(raw);
    EXPECT_EQ(currentProgram(), rawId);
    raw->unUse();
    manager.useProgram(raw);
    EXPECT_EQ(currentProgram(), 0);
    manager.useProgram(both);
    EXPECT_EQ(currentProgram(), bothId);
    manager.useProgram(raw);
    EXPECT_EQ(currentProgram(), rawId);
    EXPECT_EQ(manager.getCurrentProgram(), raw);
}

}  // namespace
