#include "support/CaptureStdout.h"

#include "render/ShaderFragment.h"
#include "render/ShaderProgramBase.h"
#include "render/ShaderVertex.h"

#include <gtest/gtest.h>

#include <string>

// No GL context in this suite: reading sources, and the refusals that come
// before any driver call.
namespace {

const std::string data = KORVEL_TEST_DATA;

TEST(ShaderTest, ReadAppendsLinesWithTextModeLineEnds)
{
    ShaderVertex shader;
    shader.setFileName(data + "crlf.glsl");
    CaptureStdout out;
    EXPECT_TRUE(shader.read());
    EXPECT_TRUE(shader.read());  // a second read appends a second copy
    EXPECT_EQ(shader.getSource(), "first line\nsecond line\nfirst line\nsecond line\n");

    ShaderFragment empty;
    empty.setFileName(data + "empty.glsl");
    EXPECT_TRUE(empty.read());
    EXPECT_EQ(empty.getSource(), "");
    EXPECT_EQ(out.text(), "");

    ShaderFragment missing;
    missing.setFileName(data + "no-such-file.glsl");
    EXPECT_FALSE(missing.read());
    missing.setFileName(data);  // a directory is no source file either
    EXPECT_FALSE(missing.read());
    EXPECT_EQ(out.text(), "[ERROR] unable to open source file\n[ERROR] unable to open source file\n");
}

TEST(ShaderTest, MissingStagesAndMissingEntryPointsAreRefused)
{
    CaptureStdout out;
    ShaderProgramBase program;
    EXPECT_FALSE(program.make());
    program.setVertexOwned(new ShaderVertex("void main() {}"));
    EXPECT_FALSE(program.make());
    program.setFragmentOwned(new ShaderFragment());
    EXPECT_FALSE(program.make());  // the stage cannot be created without a driver
    EXPECT_EQ(out.text(), "[Error] failed to use vertices shader\n[information] Source shader: void main() {}\n"
                          "[Error] failed to use fragment shader\n"
                          "[ERROR] failed to create shader\n[Error] failed to make vertices shader\n");
}

}  // namespace
