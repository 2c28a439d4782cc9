#include "parser/Preprocessor.h"
#include "parser/TextFile.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using korvel::Preprocessor;

const std::string includes = std::string(KORVEL_TEST_DATA) + "include";

struct Outcome {
    bool result;
    std::string output;
    std::string log;
};

Outcome run(const std::string& source, std::string output = "")
{
    Preprocessor preprocessor;
    preprocessor.setDirectory(includes);
    preprocessor.setSource(source);
    CaptureStdout out;
    const bool result = preprocessor.process(output);
    return {result, output, out.text()};
}

// The expansion done the obvious way, on one string edited in place, to hold
// the preprocessor's own bookkeeping to.
bool reference(const std::string& source, std::string& output)
{
    output = source;
    std::size_t position = 0;
    for (;;) {
        const std::size_t start = output.find("#include", position);
        if (start == std::string::npos) {
            return true;
        }
        const std::size_t opening = output.find('"', start);
        if (opening == std::string::npos) {
            return false;
        }
        const std::size_t closing = output.find('"', opening + 1);
        if (closing == std::string::npos) {
            return false;
        }
        const std::string name = output.substr(opening + 1, closing - opening - 1);
        output.erase(start, closing + 1 - start);
        std::string text;
        if (!korvel::readTextLines(includes + "/" + name, text)) {
            return false;
        }
        output.insert(start, text);
        position = closing + 1;
    }
}

TEST(PreprocessorTest, DirectivesAreReplacedByTheFileLines)
{
    struct Case {
        const char* label;
        std::string source;
        std::string output;
    };
    const std::vector<Case> cases = {
        {"no directive", "void main() {}\n", "void main() {}\n"},
        {"a directive on its own line", "A\n#include \"one.glsl\"\nB\n", "A\nx\ny\n\nB\n"},
        {"the rest of the line stays", "pre #include \"one.glsl\" post", "pre x\ny\n post"},
        {"carriage returns dropped", "#include \"crlf.glsl\"", "first\nsecond\n"},
        {"quotes may be far away", "#include\n\n\"one.glsl\"|", "x\ny\n|"},
        {"two apart", "#include \"one.glsl\"\n....................#include \"one.glsl\"\n",
         "x\ny\n\n....................x\ny\n\n"},
        // The search goes on 19 characters past the first directive's start,
        // which lands beyond the four inserted ones.
        {"two in a row", "#include \"one.glsl\"\n#include \"one.glsl\"\n", "x\ny\n\n#include \"one.glsl\"\n"},
        // An included directive is expanded only beyond the index just past
        // the closing quote of the directive that brought it in.
        {"nested beyond that index", "#include \"outer.glsl\"", "0123456789abcdefghij\nx\ny\n\n"},
        {"nested near the start", "#include \"near.glsl\"", "#include \"one.glsl\"\nnear\n"},
        {"a file including itself", "#include \"self.glsl\"!", "#include \"self.glsl\"\n!"},
        // An empty file leaves the search that many characters further on.
        {"the text after a short include is skipped", "#include \"empty.glsl\"#include \"one.glsl\"",
         "#include \"one.glsl\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        const Outcome got = run(c.source);
        EXPECT_TRUE(got.result);
        EXPECT_EQ(got.output, c.output);
        EXPECT_EQ(got.log, "");
    }
}

TEST(PreprocessorTest, FailuresLogOneLineAndKeepWhatWasBuilt)
{
    struct Case {
        const char* label;
        std::string source;
        std::string output;
        std::string log;
    };
    const std::vector<Case> cases = {
        {"no quotes", "A\n#include one.glsl\n", "A\n#include one.glsl\n",
         "[Error] preprocessing include with no defined file\n"},
        {"one quote", "#include \"one.glsl\n", "#include \"one.glsl\n",
         "[Error] preprocessing include with ill-formed file name\n"},
        {"missing file", "#include \"one.glsl\"....................#include \"nothere.glsl\"|",
         "x\ny\n....................|",
         "[Error] unable to open file\n[Error] preprocessing cannot find include file: nothere.glsl\n"},
        {"a directory is no file", "#include \"\"", "",
         "[Error] unable to open file\n[Error] preprocessing cannot find include file: \n"},
        {"an endless device", "#include \"../../../../../../../../../dev/zero\"", "",
         "[Error] unable to open file\n[Error] preprocessing cannot find include file: "
         "../../../../../../../../../dev/zero\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        const Outcome got = run(c.source);
        EXPECT_FALSE(got.result);
        EXPECT_EQ(got.output, c.output);
        EXPECT_EQ(got.log, c.log);
    }

    const Outcome empty = run("", "kept");
    EXPECT_TRUE(empty.result);
    EXPECT_EQ(empty.output, "kept");
    EXPECT_EQ(empty.log, "[Warning] stop pre-processing empty source\n");
}

TEST(PreprocessorTest, AGrowingIncludeLoopIsCutShort)
{
    // grow.glsl includes itself beyond its own directive, so every
    // expansion brings in another one.
    const Outcome got = run("#include \"grow.glsl\"");
    EXPECT_FALSE(got.result);
    EXPECT_EQ(got.log, "[Error] preprocessing stopped after 1000 includes, is a file including itself?\n");
    const std::string prefix = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    EXPECT_EQ(got.output.size(), 1000 * (prefix.size() + 1) + std::string("#include \"grow.glsl\"").size());
    EXPECT_EQ(got.output.substr(0, 2 * prefix.size()), prefix + prefix);

    // Few but large expansions stop at the size bound instead.
    const std::string big = std::string(KORVEL_BINARY_DIR) + "big.glsl";
    std::ofstream(big, std::ios::binary) << std::string(1 << 20, 'b');
    std::string source;
    for (int i = 0; i < 20; ++i) {
        source += "#include \"" + big + "\"";
    }
    Preprocessor preprocessor;
    preprocessor.setSource(source);
    std::string output;
    CaptureStdout out;
    EXPECT_FALSE(preprocessor.process(output));
    EXPECT_EQ(out.text(), "[Error] preprocessing output grew beyond 16777216 bytes\n");
    // The sixteenth file takes the output past 16 MiB.
    EXPECT_EQ(output.size() / ((1 << 20) + 1), 16u);
    std::remove(big.c_str());
}

TEST(PreprocessorTest, AgreesWithTheInPlaceExpansion)
{
    const std::vector<std::string> pieces = {
        "#include \"one.glsl\"", "#include \"empty.glsl\"", "#include \"outer.glsl\"", "#include \"near.glsl\"",
        "#include \"self.glsl\"", "#include \"crlf.glsl\"", "#include", "\"", "x", "\n", "#inc", "lude", "abcdefghij",
    };
    std::mt19937 random(7);
    int expanded = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string source;
        for (int i = 1 + static_cast<int>(random() % 8); i > 0; --i) {
            source += pieces[random() % pieces.size()];
        }
        std::string expected;
        const bool expectedResult = reference(source, expected);
        const Outcome got = run(source);
        ASSERT_EQ(got.result, expectedResult) << source;
        ASSERT_EQ(got.output, expected) << source;
        if (expectedResult && expected != source) {
            ++expanded;
        }
    }
    EXPECT_GT(expanded, 500);
}

}  // namespace
