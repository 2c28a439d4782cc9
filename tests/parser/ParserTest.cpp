#include "parser/Parser.h"
#include "parser/Token.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using korvel::BaseParserElement;
using korvel::Module;
using korvel::Parser;
using korvel::Token;

const std::string trace = "[Information] tag being parsed: ";

struct Outcome {
    bool result;
    std::string log;
};

Outcome parseCaptured(Parser& parser, const std::string& text)
{
    CaptureStdout out;
    const bool result = parser.parse(text);
    return {result, out.text()};
}

std::vector<std::string> namesOf(const BaseParserElement& element)
{
    std::vector<std::string> names;
    for (const BaseParserElement* child : element.getAttributes()) {
        names.push_back(child->getName());
    }
    return names;
}

TEST(ParserTest, GrammarResultsAndExactLogLines)
{
    struct Case {
        const char* label;
        std::string text;
        bool result;
        std::string log;
        std::vector<std::string> topNames;
    };
    const std::vector<Case> cases = {
        {"empty text", "", false, "", {"ERRORTAG"}},
        {"white space only", " \t\n", false, "", {"ERRORTAG"}},
        {"one element and a line end", "<a>1</a>\n", true, trace + "a\n", {"a"}},
        {"white space around", " \n\t<a>1</a> \t\n", true, trace + "a\n", {"a"}},
        {"two elements", "<a>1</a>\n<b>2</b>", true, trace + "a\n" + trace + "b\n", {"a", "b"}},
        {"empty value", "<a></a>", true, trace + "a\n", {"a"}},
        {"wrong end name", "<a>1</b>", false, trace + "a\n[ERROR] end name is wrong: b\n", {"a"}},
        {"text before a start tag", "x<a>1</a>", false,
         "[ERROR] Token char not expected in starting definition: x\n", {"ERRORTAG"}},
        {"text after the last element", "<a>1</a>x", false,
         trace + "a\n[ERROR] Token char not expected in ending : x\n", {"a"}},
        {"ending error names the first non-blank", "<a>1</a> \n yz", false,
         trace + "a\n[ERROR] Token char not expected in ending : y\n", {"a"}},
        {"a carriage return is not white space", "<a>1</a>\r\n<b>2</b>", false,
         trace + "a\n" + "[ERROR] Token char not expected in starting definition: \r\n", {"a", "ERRORTAG"}},
        {"text between children", "<a><b>1</b>x<c>2</c></a>", false,
         trace + "a\n" + trace + "b\n[ERROR] Token char not expected in starting definition: x\n", {"a"}},
        // Only what precedes a start tag is checked, so text before an end
        // tag that follows children goes unnoticed.
        {"text before an end tag after children", "<a><b>1</b>x</a>", true, trace + "a\n" + trace + "b\n", {"a"}},
        {"a blank belongs to the name", "<View >1</View>", false, trace + "View \n[ERROR] end name is wrong: View\n",
         {"View "}},
        {"the same blank closes it", "<View >1</View >", true, trace + "View \n", {"View "}},
        {"start tag never closed", "<a", false, "", {"ERRORTAG"}},
        {"nothing after the start tag", "<a>", false, trace + "a\n", {"a"}},
        {"a lone < at the very end", "<a>1<", false, trace + "a\n", {"a"}},
        {"end tag never closed", "<a>1</a", false, trace + "a\n", {"a"}},
        {"second element truncated", "<a>1</a><b>", false, trace + "a\n" + trace + "b\n", {"a", "b"}},
        {"child truncated", "<a><b>1</b>", false, trace + "a\n" + trace + "b\n", {"a"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        Parser parser;
        const Outcome got = parseCaptured(parser, c.text);
        EXPECT_EQ(got.result, c.result);
        EXPECT_EQ(got.log, c.log);
        ASSERT_NE(parser.getModule(), nullptr);
        EXPECT_EQ(parser.getModule()->getName(), "__module");
        EXPECT_EQ(namesOf(*parser.getModule()), c.topNames);
    }
}

TEST(ParserTest, TreeKeepsValuesVerbatimAndThePartBeforeAnError)
{
    const std::size_t before = Object::countInstances();
    {
        Parser parser;
        const std::string text = "<View>\n\t<Width>1280</Width>\n\t<Height> 720\n</Height>\n</View>\n"
                                 "<Broken><Inner>2</Inner><Bad>3</Wrong></Broken>";
        EXPECT_FALSE(parseCaptured(parser, text).result);
        Module* module = parser.getModule();
        ASSERT_EQ(namesOf(*module), (std::vector<std::string>{"View", "Broken"}));
        BaseParserElement* view = module->getAttributes()[0];
        EXPECT_EQ(view->getValue(), "");
        EXPECT_EQ(namesOf(*view), (std::vector<std::string>{"Width", "Height"}));
        EXPECT_EQ(view->getAttributes()[1]->getValue(), " 720\n");
        // The failed element stays in place with what it had read.
        EXPECT_EQ(namesOf(*module->getAttributes()[1]), (std::vector<std::string>{"Inner", "Bad"}));
        EXPECT_EQ(module->getAttributes()[1]->getAttributes()[1]->getValue(), "3");

        // A second parse appends; a detached module is the caller's.
        EXPECT_TRUE(parseCaptured(parser, "<c>1</c>").result);
        EXPECT_EQ(namesOf(*parser.getModule()), (std::vector<std::string>{"View", "Broken", "c"}));
        Module* detached = parser.detachModule();
        EXPECT_EQ(parser.getModule(), nullptr);
        EXPECT_TRUE(parseCaptured(parser, "<d>3</d>").result);
        EXPECT_EQ(namesOf(*parser.getModule()), (std::vector<std::string>{"d"}));
        delete detached;
        parser.getModule()->releaseAttributes();
        EXPECT_TRUE(parser.getModule()->getAttributes().empty());
        parser.releaseModule();
        EXPECT_EQ(parser.getModule(), nullptr);
        parseCaptured(parser, "<e><f>");
    }
    // Every element, module and parser is gone again.
    EXPECT_EQ(Object::countInstances(), before);

    Parser parser;
    parseCaptured(parser, "<View><Width>1280</Width><Empty></Empty></View>");
    CaptureStdout out;
    parser.dump();
    EXPECT_EQ(out.text(), "<__module>\n<View>\n<Width>1280\n</Width>\n<Empty>\n</Empty>\n</View>\n</__module>\n");
}

TEST(ParserTest, NestingIsBoundedSoDeepInputCannotExhaustTheStack)
{
    auto nested = [](int depth, const char* close) {
        std::string opening;
        std::string closing;
        for (int i = 0; i < depth; ++i) {
            opening += "<n>";
            closing += close;
        }
        return opening + closing;
    };
    Parser deepest;
    EXPECT_TRUE(parseCaptured(deepest, nested(Token::maxLevel, "</n>")).result);
    int depth = 0;
    for (const BaseParserElement* e = deepest.getModule(); !e->getAttributes().empty(); e = e->getAttributes()[0]) {
        ++depth;
    }
    EXPECT_EQ(depth, Token::maxLevel);

    Parser tooDeep;
    const Outcome got = parseCaptured(tooDeep, nested(Token::maxLevel + 1, "</n>"));
    EXPECT_FALSE(got.result);
    EXPECT_NE(got.log.find(trace + "n\n[ERROR] Token nested deeper than 1000 levels: n\n"), std::string::npos);
    // Far deeper than any stack would take, closed or not.
    for (const char* close : {"</n>", ""}) {
        Parser parser;
        EXPECT_FALSE(parseCaptured(parser, nested(100000, close)).result);
    }
}

TEST(ParserTest, LargeValuesAndArbitraryBytes)
{
    const std::string big(10 * 1024 * 1024, 'v');
    {
        Parser parser;
        EXPECT_TRUE(parseCaptured(parser, "<big>" + big + "</big>").result);
        EXPECT_EQ(parser.getModule()->getAttributes()[0]->getValue().size(), big.size());
    }
    {
        Parser parser;
        EXPECT_FALSE(parseCaptured(parser, "<big>" + big).result);
    }
    {
        // Bytes are compared as they are, NULs and high bytes included.
        Parser parser;
        const std::string name("\0\xff\x80 n", 5);
        EXPECT_TRUE(parseCaptured(parser, "<" + name + ">\x01\x02</" + name + ">").result);
        EXPECT_EQ(parser.getModule()->getAttributes()[0]->getName(), name);
    }
}

}  // namespace
