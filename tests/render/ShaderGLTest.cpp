#include "support/GLContextFixture.h"
#include "TestShaderSources.h"
#include "support/CaptureStdout.h"

#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderVertex.h"

#include <memory>
#include <string>

namespace {

class ShaderGLTest : public GLContextFixture {};

std::unique_ptr<ShaderProgramBase> programOf(const std::string& vertexText, const std::string& fragmentText)
{
    auto program = std::make_unique<ShaderProgramBase>();
    program->setVertexOwned(new ShaderVertex(vertexText));
    program->setFragmentOwned(new ShaderFragment(fragmentText));
    return program;
}

TEST_F(ShaderGLTest, CompileAndLinkErrorsGiveTheirLinesAroundTheDriverLog)
{
    struct Case {
        std::string vertex;
        std::string fragment;
        std::string first;  // up to the driver's own text
        std::string last;   // after it
    };
    const Case cases[] = {
        {testVertexSource(), "#version 330\nvoid main() { this is not glsl }\n",
         "[ERROR] Failed to compile fragment shader\n[ERROR] OPENGL ERROR type shader: ",
         "[Error] failed to make fragment shader\n"},
        {"#version 330\nvoid main() { gl_Position = undeclared; }\n", testFragmentSource(),
         "[ERROR] Failed to compile vertex shader\n[ERROR] OPENGL ERROR type shader: ",
         "[Error] failed to make vertices shader\n"},
        // Both stages compile: only the link finds the fragment stage has no main.
        {testVertexSource(), "#version 330\nout vec4 c;\nvoid helper() { c = vec4(1.0); }\n",
         "[Error] failed to link shader program\n[ERROR] OPENGL ERROR type Program: ", ""},
    };
    for (const Case& c : cases) {
        auto program = programOf(c.vertex, c.fragment);
        CaptureStdout out;
        EXPECT_FALSE(program->make());
        const std::string text = out.text();
        EXPECT_EQ(text.rfind(c.first, 0), 0u) << text;
        ASSERT_GT(text.size(), c.first.size() + c.last.size() + 1) << "no driver log: " << text;
        EXPECT_EQ(text.substr(text.size() - c.last.size()), c.last) << text;
    }
}

TEST_F(ShaderGLTest, RequiredNamesRefuseTheProgramAndOptionalOnesWarn)
{
    struct Case {
        const char* omit;
        bool made;
        const char* text;
    };
    const Case cases[] = {
        // The lookups stop at a fatal name: no later warning follows.
        {"projection", false, "[Error] binding of projection failed\n"},
        {"modelview", false, "[Error] binding of modelview failed\n"},
        {"refObject", false, "[Error] binding of matrix object failed\n"},
        {"in_Position", false, "[Error] binding of attribute in_Position failed\n"},
        // Without normals the texture coordinates are not checked.
        {"in_Normal", true, "[Warning] binding of attribute in_Normal failed\n"},
        {"in_UV", true, "[Warning] binding of attribute in_UV failed\n"},
    };
    for (const Case& c : cases) {
        auto program = programOf(testVertexSource(c.omit), testFragmentSource());
        CaptureStdout out;
        EXPECT_EQ(program->make(), c.made) << c.omit;
        EXPECT_EQ(out.text(), c.text) << c.omit;
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

class CountedVertex : public ShaderVertex {
public:
    explicit CountedVertex(int& deaths) : deaths(deaths) {}
    ~CountedVertex() override { ++deaths; }

private:
    int& deaths;
};

TEST_F(ShaderGLTest, OnlyOwnedStagesAreDeletedAndDestructionUnbinds)
{
    int deaths = 0;
    CountedVertex linked(deaths);
    {
        ShaderProgramBase program;
        program.setVertex(&linked);
        program.setVertexOwned(new CountedVertex(deaths));  // the linked one is forgotten
        EXPECT_EQ(deaths, 0);
        program.setVertex(&linked);  // the owned one is deleted
        EXPECT_EQ(deaths, 1);
    }
    EXPECT_EQ(deaths, 1);

    // Destroying any program unbinds whatever program is current.
    auto current = programOf(testVertexSource(), testFragmentSource());
    CaptureStdout quiet;
    ASSERT_TRUE(current->make());
    current->use();
    EXPECT_EQ(currentProgram(), static_cast<GLint>(current->getProgramRaw()));
    { ShaderProgramBase other; }
    EXPECT_EQ(currentProgram(), 0);
}

}  // namespace
