#include "parser/Preprocessor.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
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

TEST(PreprocessorTest, IncludeCyclesStopWhereFoundAndAnyNumberOfOtherIncludesPasses)
{
    const std::string outer = "0123456789abcdefghij\nx\ny\n\n";
    const struct {
        std::string source;
        bool result;
        std::string output;  // a cycle's directive stays, unexpanded
    } cases[] = {
        // grow.glsl includes itself beyond its own directive.
        {"#include \"grow.glsl\"", false, "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ#include \"grow.glsl\"\n"},
        {"#include \"cycA.glsl\"", false,
         std::string(25, 'a') + std::string(25, 'b') + "#include \"cycA.glsl\"\n\n"},
        // Once its text has been passed, the same file may come again.
        {"#include \"outer.glsl\"" + std::string(30, '-') + "#include \"outer.glsl\"", true,
         outer + std::string(30, '-') + outer},
    };
    for (const auto& c : cases) {
        const Outcome got = run(c.source);
        EXPECT_EQ(got.result, c.result) << c.source;
        EXPECT_EQ(got.output, c.output) << c.source;
        EXPECT_EQ(got.log.rfind(c.result ? "" : "[Error] preprocessing include cycle", 0), 0u) << got.log;
    }
    EXPECT_NE(run(cases[1].source).log.find("cycA.glsl -> cycB.glsl -> cycA.glsl"), std::string::npos);

    // 1,200 distinct files one after the other, and 300 nested in each
    // other: no cycle, so no limit.
    const std::filesystem::path many = std::string(KORVEL_BINARY_DIR) + "preprocessor-many";
    std::filesystem::create_directories(many);
    std::string flat;
    std::string expected;
    for (int i = 0; i < 1200; ++i) {
        const std::string line = "// line " + std::to_string(i) + " of a long list\n";
        std::ofstream(many / ("n" + std::to_string(i) + ".glsl")) << line;
        flat += "#include \"n" + std::to_string(i) + ".glsl\"\n";
        expected += line + "\n";
    }
    for (int i = 0; i < 300; ++i) {
        std::ofstream(many / ("d" + std::to_string(i) + ".glsl"))
            << "// depth " << i << " of a deep nest #include \"d" << (i + 1) << ".glsl\"\n";
    }
    std::ofstream(many / "d300.glsl") << "bottom";
    const Outcome listed = run(flat, many.string());
    EXPECT_TRUE(listed.result) << listed.log;
    EXPECT_EQ(listed.output, expected);
    const Outcome nested = run("#include \"d0.glsl\"", many.string());
    EXPECT_TRUE(nested.result) << nested.log;
    EXPECT_EQ(nested.output.find("#include"), std::string::npos);
    EXPECT_NE(nested.output.find("bottom"), std::string::npos);
    std::filesystem::remove_all(many);

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
