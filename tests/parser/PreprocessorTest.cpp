#include "parser/Preprocessor.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

using korvel::Preprocessor;

struct Outcome {
    bool result;
    std::string output;
    std::string log;
};

Outcome run(const std::string& source, const std::string& directory = std::string(KORVEL_TEST_DATA) + "include")
{
    Preprocessor preprocessor;
    preprocessor.setDirectory(directory);
    preprocessor.setSource(source);
    Outcome got{false, "kept", ""};
    CaptureStdout out;
    got.result = preprocessor.process(got.output);
    got.log = out.text();
    return got;
}

TEST(PreprocessorTest, DirectivesAreReplacedAndTheSearchGoesOnPastTheDirective)
{
    const std::string one = "#include \"one.glsl\"";
    const std::string missing = "[Error] unable to open file\n[Error] preprocessing cannot find include file: ";
    const struct {
        std::string source;
        bool result;
        std::string output;
        std::string log;
    } cases[] = {
        {"pre " + one + " post", true, "pre x\ny\n post", ""},
        {"#include \"crlf.glsl\"", true, "first\nsecond\n", ""},
        {one + "\n....................#include \"one.glsl\"\n", true, "x\ny\n\n....................x\ny\n\n", ""},
        // The search goes on 19 characters past the first directive's start,
        // which lands beyond the four inserted ones.
        {one + "\n" + one + "\n", true, "x\ny\n\n" + one + "\n", ""},
        // An included directive is expanded only beyond that index.
        {"#include \"outer.glsl\"", true, "0123456789abcdefghij\nx\ny\n\n", ""},
        {"#include \"near.glsl\"", true, one + "\nnear\n", ""},
        {"#include \"self.glsl\"!", true, "#include \"self.glsl\"\n!", ""},
        // An empty file leaves the search that many characters further on.
        {"#include \"empty.glsl\"" + one, true, one, ""},
        // Failures keep what was built, the erased directive included.
        {"A\n#include one.glsl\n", false, "A\n#include one.glsl\n", "[Error] preprocessing include with no defined file\n"},
        {"#include \"one.glsl\n", false, "#include \"one.glsl\n",
         "[Error] preprocessing include with ill-formed file name\n"},
        {one + "....................#include \"nothere.glsl\"|", false, "x\ny\n....................|",
         missing + "nothere.glsl\n"},
        {"", true, "kept", "[Warning] stop pre-processing empty source\n"},
    };
    for (const auto& c : cases) {
        const Outcome got = run(c.source);
        EXPECT_EQ(got.result, c.result) << c.source;
        EXPECT_EQ(got.output, c.output) << c.source;
        EXPECT_EQ(got.log, c.log) << c.source;
    }
}

TEST(PreprocessorTest, GrowingIncludeLoopsAndHugeOutputsAreCutShort)
{
    // grow.glsl includes itself beyond its own directive, so every
    // expansion brings in another one.
    const Outcome grown = run("#include \"grow.glsl\"");
    EXPECT_FALSE(grown.result);
    EXPECT_EQ(grown.log, "[Error] preprocessing stopped after 1000 includes, is a file including itself?\n");
    EXPECT_EQ(grown.output.size(), 1000 * 37 + std::string("#include \"grow.glsl\"").size());

    // Few but large expansions stop at the size bound instead: the
    // sixteenth 1 MiB file takes the output past 16 MiB.
    std::ofstream(std::string(KORVEL_BINARY_DIR) + "big.glsl", std::ios::binary) << std::string(1 << 20, 'b');
    std::string source;
    for (int i = 0; i < 20; ++i) {
        source += "#include \"big.glsl\"";
    }
    const Outcome big = run(source, KORVEL_BINARY_DIR);
    EXPECT_FALSE(big.result);
    EXPECT_EQ(big.log, "[Error] preprocessing output grew beyond 16777216 bytes\n");
    EXPECT_EQ(big.output.size() / ((1 << 20) + 1), 16u);
    std::remove((std::string(KORVEL_BINARY_DIR) + "big.glsl").c_str());
}

}  // namespace
