#include "parser/Interpreter.h"
#include "parser/TextFile.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using korvel::BaseParserElement;
using korvel::Interpreter;
using korvel::readTextLines;

const std::string data = KORVEL_TEST_DATA;

// Scratch files live in the build tree.
std::string scratchFile(const std::string& name, const std::string& bytes)
{
    const std::string file = std::string(KORVEL_BINARY_DIR) + name;
    std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    return file;
}

TEST(InterpreterTest, TextModeLineEnds)
{
    struct Case {
        std::string bytes;
        std::string lines;
    };
    const Case cases[] = {
        {"", ""},
        {"a", "a\n"},
        {"a\n", "a\n"},
        {"a\nb", "a\nb\n"},
        {"a\r\nb\r\n", "a\nb\n"},
        {"a\r\nb", "a\nb\n"},
        {"a\r", "a\n"},
        {"\r", ""},
        {"\r\n", "\n"},
        {"a\rb\n", "a\rb\n"},
        {"a\r\r\n", "a\r\n"},
        {"\n\n", "\n\n"},
        {std::string("n\0l\r\n", 5), std::string("n\0l\n", 4)},
    };
    for (const Case& c : cases) {
        std::string result = "before";
        ASSERT_TRUE(readTextLines(scratchFile("lines.txt", c.bytes), result));
        EXPECT_EQ(result, c.lines) << c.bytes;
    }

    std::string untouched = "same";
    EXPECT_FALSE(readTextLines(data + "missing.txt", untouched));
    EXPECT_FALSE(readTextLines(data, untouched));
    // A pipe without a writer would block a plain open, and a device could
    // be endless.
    const std::string fifo = std::string(KORVEL_BINARY_DIR) + "parser-fifo";
    ::unlink(fifo.c_str());
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_FALSE(readTextLines(fifo, untouched));
    EXPECT_FALSE(readTextLines("/dev/zero", untouched));
    // Sparse, so it costs no disk.
    const std::string huge = scratchFile("huge.txt", "");
    ASSERT_EQ(::truncate(huge.c_str(), static_cast<off_t>(korvel::maxTextFileSize) + 1), 0);
    EXPECT_FALSE(readTextLines(huge, untouched));
    ::unlink(huge.c_str());
    ::unlink(fifo.c_str());
    EXPECT_EQ(untouched, "same");
}

TEST(InterpreterTest, ParsesAFileOrASourceAndKeepsOnlyTheLastParser)
{
    const std::size_t before = Object::countInstances();
    {
        Interpreter interpreter;
        CaptureStdout out;
        // Nothing to parse: false, no parser, no message.
        EXPECT_FALSE(interpreter.parse());
        EXPECT_EQ(interpreter.getParser(), nullptr);
        interpreter.setFileName(data + "does-not-exist.def");
        EXPECT_FALSE(interpreter.execute());
        EXPECT_EQ(interpreter.getParser(), nullptr);
        EXPECT_EQ(out.text(), "");

        interpreter.setFileName("");
        interpreter.setSource("<a>1</a>");
        EXPECT_TRUE(interpreter.parse());
        ASSERT_NE(interpreter.getParser(), nullptr);
        const std::size_t withOneParser = Object::countInstances();
        EXPECT_TRUE(interpreter.execute());
        EXPECT_EQ(Object::countInstances(), withOneParser);

        // A file name wins over a source set directly.
        interpreter.setFileName(data + "config.def");
        EXPECT_TRUE(interpreter.parse());
        BaseParserElement* module = interpreter.getParser()->getModule();
        ASSERT_EQ(module->getAttributes().size(), 2u);
        EXPECT_EQ(module->getAttributes()[0]->getName(), "View");

        // The tree of a file that fails part way is still there.
        interpreter.setFileName(data + "unterminated.def");
        EXPECT_FALSE(interpreter.parse());
        ASSERT_NE(interpreter.getParser(), nullptr);
        BaseParserElement* view = interpreter.getParser()->getModule()->getAttributes().at(0);
        int32_t width = 0;
        view->startAttributes();
        EXPECT_TRUE(view->getNextAttributeValueInt("Width", width));
        EXPECT_EQ(width, 1280);

        interpreter.releaseParser();
        EXPECT_EQ(interpreter.getParser(), nullptr);
        interpreter.parse();
    }
    EXPECT_EQ(Object::countInstances(), before);
}

TEST(InterpreterTest, WindowsLineEndsReadTheSameAsUnixOnes)
{
    Interpreter unix;
    Interpreter windows;
    unix.setFileName(data + "config.def");
    windows.setFileName(data + "config_crlf.def");
    CaptureStdout out;
    EXPECT_TRUE(unix.parse());
    const std::string unixLog = out.text();
    out.clear();
    EXPECT_TRUE(windows.execute());
    EXPECT_EQ(out.text(), unixLog);
    EXPECT_EQ(windows.getSource(), unix.getSource());

    BaseParserElement* module = windows.getParser()->getModule();
    module->startAttributes();
    BaseParserElement* view = module->getNextAttribute("View");
    ASSERT_NE(view, nullptr);
    int32_t height = 0;
    view->startAttributes();
    EXPECT_TRUE(view->getNextAttributeValueInt("Height", height));
    EXPECT_EQ(height, 720);
    std::string verbose;
    BaseParserElement* picking = module->getNextAttribute("Picking");
    ASSERT_NE(picking, nullptr);
    picking->startAttributes();
    EXPECT_TRUE(picking->getNextAttributeValueString("Verbose", verbose));
    EXPECT_EQ(verbose, "1");
}

}  // namespace
