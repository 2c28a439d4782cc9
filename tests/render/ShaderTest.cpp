#include "support/CaptureStdout.h"

#include "render/GLBaseStructure.h"
#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderProgramInterpreter.h"
#include "render/ShaderVertex.h"

#include "geometry/GPattern.h"

#include <gtest/gtest.h>

#include <string>

// No GL context in this suite: what does not touch the driver, and the
// refusals of what would.
namespace {

const std::string data = KORVEL_TEST_DATA;

TEST(ShaderTest, ReadAppendsLinesWithTextModeLineEnds)
{
    ShaderVertex shader;
    shader.setFileName(data + "crlf.glsl");
    CaptureStdout out;
    EXPECT_TRUE(shader.read());
    EXPECT_EQ(shader.getSource(), "first line\nsecond line\n");
    // A second read appends a second copy.
    EXPECT_TRUE(shader.read());
    EXPECT_EQ(shader.getSource(), "first line\nsecond line\nfirst line\nsecond line\n");
    EXPECT_EQ(out.text(), "");  // reading is silent, unlike setSource

    ShaderFragment empty;
    empty.setFileName(data + "empty.glsl");
    EXPECT_TRUE(empty.read());
    EXPECT_EQ(empty.getSource(), "");

    ShaderFragment missing;
    missing.setFileName(data + "no-such-file.glsl");
    EXPECT_FALSE(missing.read());
    // A directory is no source file either.
    missing.setFileName(data);
    EXPECT_FALSE(missing.read());
    EXPECT_EQ(out.text(), "[ERROR] unable to open source file\n[ERROR] unable to open source file\n");
    EXPECT_EQ(missing.getSource(), "");
}

TEST(ShaderTest, WithoutEntryPointsNothingReachesTheDriver)
{
    CaptureStdout out;
    ShaderVertex vertex("void main() {}");
    EXPECT_EQ(out.text(), "[information] Source shader: void main() {}\n");
    out.clear();
    EXPECT_FALSE(vertex.make());
    EXPECT_EQ(out.text(), "[ERROR] failed to create shader\n");

    ShaderProgramBase program;
    program.setVertex(&vertex);
    program.setFragmentOwned(new ShaderFragment());
    out.clear();
    EXPECT_FALSE(program.make());
    EXPECT_EQ(out.text(), "[ERROR] failed to create shader\n[Error] failed to make vertices shader\n");

    // A structure without its entry points keeps the arrays but makes no
    // GL object, and drawing it does nothing.
    GLBaseStructure structure;
    out.clear();
    EXPECT_FALSE(structure.make(new GPattern[3], 3, new unsigned[3]{0, 1, 2}, 3));
    EXPECT_NE(out.text(), "");
    EXPECT_EQ(structure.getVertexArrayRaw(), 0u);
    EXPECT_NE(structure.getVertices(), nullptr);
    structure.draw();
}

TEST(ShaderTest, DefinitionLoadsTheStagesItNames)
{
    ShaderProgramBase program;
    program.setVertexOwned(new ShaderVertex());
    program.setFragmentOwned(new ShaderFragment());

    korvel::ShaderProgramInterpreter interpreter;
    interpreter.setDirectory(data + "manager/");
    interpreter.setProgram(&program);
    // Unknown elements are ignored.
    interpreter.setSource("<comment>any</comment>\n<vertex><file>shaderVRaw.glsl</file></vertex>\n");
    CaptureStdout out;
    EXPECT_TRUE(interpreter.execute());
    EXPECT_NE(out.text().find("[Information] file name: " + data + "manager//shaderVRaw.glsl\n"), std::string::npos);
    EXPECT_EQ(program.getVertex()->getSource().rfind("#version 330\nin vec3 in_Position;\n", 0), 0u);
    // Only the vertex stage was named: the fragment stage stays empty.
    EXPECT_EQ(program.getFragment()->getSource(), "");

    out.clear();
    interpreter.setSource("<fragment><name>x</name></fragment>\n");
    EXPECT_FALSE(interpreter.execute());
    EXPECT_NE(out.text().find("[ERROR] shader definition element fragment names no file\n"), std::string::npos);

    // Nothing to parse.
    interpreter.setSource("");
    EXPECT_FALSE(interpreter.execute());
}

}  // namespace
