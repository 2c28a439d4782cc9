#include "GLContextFixture.h"
#include "TestShaderSources.h"
#include "support/CaptureStdout.h"

#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderVertex.h"

#include <memory>
#include <string>

namespace {

class ShaderGLTest : public GLContextFixture {};

// Both stages owned by the program, sources given directly.
std::unique_ptr<ShaderProgramBase> programOf(const std::string& vertexText, const std::string& fragmentText)
{
    auto program = std::make_unique<ShaderProgramBase>();
    program->setVertexOwned(new ShaderVertex(vertexText));
    program->setFragmentOwned(new ShaderFragment(fragmentText));
    return program;
}

bool startsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

TEST_F(ShaderGLTest, EntryPointListsNeedACurrentContext)
{
    glfwMakeContextCurrent(nullptr);
    EXPECT_FALSE(Shader::init());
    EXPECT_FALSE(ShaderProgram::init());
    EXPECT_FALSE(OpenGLError::init());
    EXPECT_FALSE(GLBaseStructure::init());
    {
        CaptureStdout out;
        EXPECT_FALSE(korvel::TextureManager::init());
        EXPECT_EQ(out.text(), "[ERROR] generateMipmap function not found\n");
    }
    glfwMakeContextCurrent(window);
    EXPECT_TRUE(Shader::init());
    EXPECT_TRUE(ShaderProgram::init());
    EXPECT_TRUE(OpenGLError::init());
    EXPECT_TRUE(GLBaseStructure::init());
    EXPECT_TRUE(korvel::TextureManager::init());
}

TEST_F(ShaderGLTest, CompileErrorNamesTheStageKindThenTheDriverLog)
{
    ShaderFragment fragment("#version 330\nvoid main() { this is not glsl }\n");
    ShaderVertex vertex("#version 330\nvoid main() { gl_Position = undeclared; }\n");
    Shader bare;

    CaptureStdout out;
    EXPECT_FALSE(fragment.make());
    EXPECT_NE(fragment.getShaderRaw(), 0u);  // the failed object is kept
    EXPECT_TRUE(startsWith(out.text(), "[ERROR] Failed to compile fragment shader\n"
                                       "[ERROR] OPENGL ERROR type shader: "))
        << out.text();
    EXPECT_GT(out.text().size(), std::string("[ERROR] Failed to compile fragment shader\n"
                                             "[ERROR] OPENGL ERROR type shader: \n")
                                     .size());

    out.clear();
    EXPECT_FALSE(vertex.make());
    EXPECT_TRUE(startsWith(out.text(), "[ERROR] Failed to compile vertex shader\n"
                                       "[ERROR] OPENGL ERROR type shader: "))
        << out.text();

    // A bare Shader has no type: the driver refuses to create it, and there
    // is no object whose log could be shown.
    out.clear();
    EXPECT_FALSE(bare.make());
    EXPECT_EQ(out.text(), "[ERROR] failed to create shader\n[ERROR] Failed to compile vertex shader\n");
}

TEST_F(ShaderGLTest, MakeRefusesMissingStagesAndReportsLinkErrors)
{
    CaptureStdout out;
    ShaderProgramBase none;
    EXPECT_FALSE(none.make());
    EXPECT_EQ(out.text(), "[Error] failed to use vertices shader\n");

    ShaderProgramBase vertexOnly;
    vertexOnly.setVertexOwned(new ShaderVertex(testVertexSource()));
    out.clear();
    EXPECT_FALSE(vertexOnly.make());
    EXPECT_EQ(out.text(), "[Error] failed to use fragment shader\n");

    out.clear();
    auto broken = programOf(testVertexSource(), "#version 330\nout vec4 c;\nvoid main() { c = vec4(1 }\n");
    EXPECT_FALSE(broken->make());
    EXPECT_NE(out.text().find("[Error] failed to make fragment shader\n"), std::string::npos) << out.text();

    // Both stages compile, but the fragment stage has no main: only the
    // link can tell.
    auto unlinked = programOf(testVertexSource(), "#version 330\nout vec4 c;\nvoid helper() { c = vec4(1.0); }\n");
    out.clear();
    EXPECT_FALSE(unlinked->make());
    const std::string text = out.text();
    const auto link = text.find("[Error] failed to link shader program\n[ERROR] OPENGL ERROR type Program: ");
    EXPECT_NE(link, std::string::npos) << text;
}

TEST_F(ShaderGLTest, RequiredUniformsAndPositionRefuseTheProgram)
{
    struct Case {
        const char* omit;
        const char* error;
    };
    const Case cases[] = {
        {"projection", "[Error] binding of projection failed\n"},
        {"modelview", "[Error] binding of modelview failed\n"},
        {"refObject", "[Error] binding of matrix object failed\n"},
    };
    for (const Case& c : cases) {
        auto program = programOf(testVertexSource(c.omit), testFragmentSource());
        CaptureStdout out;
        EXPECT_FALSE(program->make()) << c.omit;
        // The lookups stop at the fatal one: no optional warning follows.
        const std::string text = out.text();
        EXPECT_EQ(text.substr(text.size() - std::string(c.error).size()), c.error) << c.omit;
        EXPECT_EQ(text.find("[Warning]"), std::string::npos) << text;
    }

    auto noPosition = programOf(testVertexSource("in_Position"), testFragmentSource());
    CaptureStdout out;
    EXPECT_FALSE(noPosition->make());
    EXPECT_NE(out.text().find("[Error] binding of attribute in_Position failed\n"), std::string::npos);

    // Normals and texture coordinates are optional; without normals the UV
    // check is skipped.
    for (const char* omit : {"in_Normal", "in_UV"}) {
        auto flat = programOf(testVertexSource(omit), testFragmentSource());
        out.clear();
        EXPECT_TRUE(flat->make()) << omit;
        EXPECT_EQ(out.text(), std::string("[Warning] binding of attribute ") + omit + " failed\n");
    }
}

TEST_F(ShaderGLTest, MissingTimeWarnsOnceAndOnlyANonZeroAgeComplains)
{
    auto program = programOf(testVertexSource(), testFragmentSource("time"));
    CaptureStdout out;
    ASSERT_TRUE(program->make()) << out.text();
    EXPECT_EQ(out.text(), "[Warning] binding of time elapse failed\n");
    program->use();

    out.clear();
    program->setTimeElapse(0.0f);
    program->setTimeElapse(0.0f);
    EXPECT_EQ(out.text(), "");
    program->setTimeElapse(0.25f);
    program->setTimeElapse(3.0f);
    EXPECT_EQ(out.text(), "ERREUR\nERREUR\n");

    // With the uniform present the age goes to the driver silently.
    auto timed = programOf(testVertexSource(), testFragmentSource());
    out.clear();
    ASSERT_TRUE(timed->make());
    timed->use();
    timed->setTimeElapse(3.0f);
    EXPECT_EQ(out.text(), "");
}

TEST_F(ShaderGLTest, UnmappedTextureSamplerWarnsOnEveryCall)
{
    auto program = programOf(testVertexSource(), testFragmentSource("textureSampler"));
    CaptureStdout out;
    ASSERT_TRUE(program->make());
    EXPECT_EQ(out.text(), "[Warning] binding of textureSampler int failed\n");
    program->use();
    out.clear();
    program->setTextureSampler(0);
    program->setTextureSampler(1);
    EXPECT_EQ(out.text(), "[Warning] attempt to change unmapped texture sampler in shaderprogram\n"
                          "[Warning] attempt to change unmapped texture sampler in shaderprogram\n");
    EXPECT_EQ(program->getTextureSampler(), 1);
}

TEST_F(ShaderGLTest, VerboseBindingDumpsTheLocations)
{
    auto program = programOf(testVertexSource(), testFragmentSource());
    program->isVerbose = true;
    program->codeName = "Probe";
    CaptureStdout out;
    ASSERT_TRUE(program->make());
    const std::string text = out.text();
    const auto start = text.find("--------------------------------------------------- Start values At binding");
    const auto name = text.find("codeName: Probe\nprojectMatrixLoc: ");
    const auto end = text.find("--------------------------------------------------- End values At binding");
    const auto attributes = text.find("[Information] Attrib location for in_Position: 0\n"
                                      "[Information] Attrib location for in_Normal: 1\n"
                                      "[Information] Attrib location for in_UV: 2\n");
    EXPECT_LT(start, name);
    EXPECT_LT(name, end);
    EXPECT_LT(end, attributes);
    EXPECT_NE(attributes, std::string::npos) << text;
    EXPECT_NE(text.find("fogEnd: 100\nfogStart: 10\n"), std::string::npos);
}

class CountedVertex : public ShaderVertex {
public:
    explicit CountedVertex(int& deaths) : deaths(deaths) {}
    ~CountedVertex() override { ++deaths; }

private:
    int& deaths;
};

TEST_F(ShaderGLTest, StageOwnershipAndUnbindingOnDestruction)
{
    int deaths = 0;
    CountedVertex linked(deaths);
    {
        ShaderProgramBase program;
        program.setVertex(&linked);
        // A linked stage is forgotten, not deleted, when replaced...
        program.setVertexOwned(new CountedVertex(deaths));
        EXPECT_EQ(deaths, 0);
        // ...while an owned one is deleted.
        program.setVertex(&linked);
        EXPECT_EQ(deaths, 1);
        EXPECT_FALSE(program.isVertexOwned());
    }
    EXPECT_EQ(deaths, 1);  // the program left its linked stage alone

    // releaseVertex deletes even a stage that was only linked.
    auto* heapLinked = new CountedVertex(deaths);
    {
        ShaderProgramBase program;
        program.setVertex(heapLinked);
        program.releaseVertex();
        EXPECT_EQ(deaths, 2);
        EXPECT_EQ(program.getVertex(), nullptr);
    }

    // Destroying any program unbinds whatever program is current.
    auto current = programOf(testVertexSource(), testFragmentSource());
    ASSERT_TRUE(current->make());
    current->use();
    EXPECT_EQ(currentProgram(), static_cast<GLint>(current->getProgramRaw()));
    {
        ShaderProgramBase other;
    }
    EXPECT_EQ(currentProgram(), 0);
}

}  // namespace
