#include "parser/Parser.h"
#include "parser/Token.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using korvel::BaseParserElement;
using korvel::Parser;
using Names = std::vector<std::string>;

const std::string trace = "[Information] tag being parsed: ";

bool parseQuietly(Parser& parser, const std::string& text, std::string* log = nullptr)
{
    CaptureStdout out;
    const bool result = parser.parse(text);
    if (log != nullptr) {
        *log = out.text();
    }
    return result;
}

Names namesOf(const BaseParserElement& element)
{
    Names names;
    for (const BaseParserElement* child : element.getAttributes()) {
        names.push_back(child->getName());
    }
    return names;
}

TEST(ParserTest, GrammarResultsAndExactLogLines)
{
    struct Case {
        std::string text;
        bool result;
        std::string log;
        Names topNames;
    };
    const std::string nul("\0\xff n", 4);
    const Case cases[] = {
        {"", false, "", {"ERRORTAG"}},
        {" \n\t<a>1</a> \t\n", true, trace + "a\n", {"a"}},
        {"<a>1</a>\n<b></b>", true, trace + "a\n" + trace + "b\n", {"a", "b"}},
        {"<a>1</b>", false, trace + "a\n[ERROR] end name is wrong: b\n", {"a"}},
        {"x<a>1</a>", false, "[ERROR] Token char not expected in starting definition: x\n", {"ERRORTAG"}},
        {"<a>1</a> \n yz", false, trace + "a\n[ERROR] Token char not expected in ending : y\n", {"a"}},
        // A carriage return is not white space.
        {"<a>1</a>\r\n<b>2</b>", false,
         trace + "a\n[ERROR] Token char not expected in starting definition: \r\n", {"a", "ERRORTAG"}},
        {"<a><b>1</b>x<c>2</c></a>", false,
         trace + "a\n" + trace + "b\n[ERROR] Token char not expected in starting definition: x\n", {"a"}},
        // Only what precedes a start tag is checked: text before an end tag
        // that follows children goes unnoticed.
        {"<a><b>1</b>x</a>", true, trace + "a\n" + trace + "b\n", {"a"}},
        // A blank belongs to the name, and only the same blank closes it.
        {"<View >1</View>", false, trace + "View \n[ERROR] end name is wrong: View\n", {"View "}},
        {"<View >1</View >", true, trace + "View \n", {"View "}},
        // Bytes are compared as they are.
        {"<" + nul + ">\x01</" + nul + ">", true, trace + nul + "\n", {nul}},
        {"<a", false, "", {"ERRORTAG"}},
        {"<a>1</a><b>", false, trace + "a\n" + trace + "b\n", {"a", "b"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Parser parser;
        std::string log;
        EXPECT_EQ(parseQuietly(parser, c.text, &log), c.result);
        EXPECT_EQ(log, c.log);
        EXPECT_EQ(namesOf(*parser.getModule()), c.topNames);
    }
}

TEST(ParserTest, TreeKeepsThePartBeforeAnErrorAndDumpsParseably)
{
    Parser parser;
    EXPECT_FALSE(parseQuietly(parser, "<View><Inner>2</Inner><Bad>3</Wrong></View>"));
    const BaseParserElement* module = parser.getModule();
    // The failed element stays in place with what it had read.
    EXPECT_EQ(namesOf(*module->getAttributes().at(0)), (Names{"Inner", "Bad"}));
    EXPECT_EQ(module->getAttributes()[0]->getAttributes()[1]->getValue(), "3");

    // A second parse appends to the module.
    EXPECT_TRUE(parseQuietly(parser, "<c><d>1</d><e></e></c>"));
    ASSERT_EQ(namesOf(*module), (Names{"View", "c"}));
    CaptureStdout out;
    module->getAttributes()[1]->dump();
    EXPECT_EQ(out.text(), "<c>\n<d>1\n</d>\n<e>\n</e>\n</c>\n");
}

TEST(ParserTest, NestingIsBoundedSoDeepInputCannotExhaustTheStack)
{
    auto nested = [](int depth) {
        std::string opening;
        std::string closing;
        for (int i = 0; i < depth; ++i) {
            opening += "<n>";
            closing += "</n>";
        }
        return opening + closing;
    };
    Parser deepest;
    EXPECT_TRUE(parseQuietly(deepest, nested(korvel::Token::maxLevel)));
    std::string log;
    Parser tooDeep;
    EXPECT_FALSE(parseQuietly(tooDeep, nested(korvel::Token::maxLevel + 1), &log));
    EXPECT_NE(log.find(trace + "n\n[ERROR] Token nested deeper than 1000 levels: n\n"), std::string::npos);
}

}  // namespace
