#include "parser/Interpreter.h"
#include "parser/TextFile.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using korvel::Interpreter;
using korvel::readTextLines;

const std::string data = KORVEL_TEST_DATA;

TEST(InterpreterTest, TextModeDropsCarriageReturnsBeforeLineEndsAndEndsEveryLine)
{
    const std::string file = std::string(KORVEL_BINARY_DIR) + "lines.txt";
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"a\nb", "a\nb\n"},
        {"a\r\nb\r\n", "a\nb\n"},
        {"a\r", "a\n"},
        {"a\rb\n", "a\rb\n"},
        {"a\r\r\n", "a\r\n"},
        {"\n\n", "\n\n"},
        {std::string("n\0l\r\n", 5), std::string("n\0l\n", 4)},
    };
    for (const auto& [bytes, lines] : cases) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
        std::string result = "before";
        ASSERT_TRUE(readTextLines(file, result));
        EXPECT_EQ(result, lines) << bytes;
    }

    // Neither a directory, nor a pipe without a writer (a plain open would
    // block), nor an endless device, nor a file past the size bound (sparse,
    // so it costs no disk).
    const std::string fifo = std::string(KORVEL_BINARY_DIR) + "parser-fifo";
    ::unlink(fifo.c_str());
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    ASSERT_EQ(::truncate(file.c_str(), static_cast<off_t>(korvel::maxTextFileSize) + 1), 0);
    std::string untouched = "same";
    for (const std::string& bad : {data + "missing.txt", data, fifo, std::string("/dev/zero"), file}) {
        EXPECT_FALSE(readTextLines(bad, untouched)) << bad;
    }
    ::unlink(fifo.c_str());
    ::unlink(file.c_str());
    EXPECT_EQ(untouched, "same");
}

TEST(InterpreterTest, ParsesAFileOrASourceAndKeepsAPartialTree)
{
    Interpreter interpreter;
    CaptureStdout out;
    // Nothing to parse, or a missing file: false, no parser, no message.
    EXPECT_FALSE(interpreter.parse());
    EXPECT_EQ(interpreter.getParser(), nullptr);
    interpreter.setFileName(data + "does-not-exist.def");
    EXPECT_FALSE(interpreter.execute());
    EXPECT_EQ(interpreter.getParser(), nullptr);
    EXPECT_EQ(out.text(), "");

    // A file name wins over a source set directly.
    interpreter.setSource("<a>1</a>");
    interpreter.setFileName(data + "unterminated.def");
    EXPECT_FALSE(interpreter.parse());
    ASSERT_NE(interpreter.getParser(), nullptr);
    int32_t width = 0;
    const auto view = interpreter.getParser()->getModule()->getAttributes().at(0);
    view->startAttributes();
    EXPECT_TRUE(view->getNextAttributeValueInt("Width", width) && width == 1280);
}

}  // namespace
