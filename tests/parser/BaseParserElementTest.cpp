#include "parser/Parser.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using korvel::BaseParserElement;
using korvel::Parser;

BaseParserElement* firstOf(Parser& parser, const std::string& text)
{
    CaptureStdout quiet;
    parser.parse(text);
    return parser.getModule()->getAttributes().at(0);
}

TEST(BaseParserElementTest, CursorOnlyMovesForwardUntilRestarted)
{
    Parser parser;
    BaseParserElement* r = firstOf(parser, "<r><b>1</b><b>2</b><y>3</y><b>4</b><z>5</z></r>");
    EXPECT_EQ(r->getNextAttribute("b"), nullptr);  // a fresh cursor stands at the end
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("b")->getValue(), "1");
    EXPECT_EQ(r->getNextAttribute("b")->getValue(), "2");
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("y")->getValue(), "3");
    // The first two b were stepped over while looking for y.
    EXPECT_EQ(r->getNextAttribute("b")->getValue(), "4");
    // The failed lookup uses up the children: z is out of reach until a restart.
    EXPECT_EQ(r->getNextAttribute("B"), nullptr);
    EXPECT_EQ(r->getNextAttribute("z"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("z")->getValue(), "5");
}

TEST(BaseParserElementTest, ValueQueriesConvertOrTellWhyNot)
{
    Parser parser;
    BaseParserElement* v = firstOf(parser, "<v><i> 42xyz</i><f>1.5e3</f><d>-0.25</d><s> keep\n</s><bad>abc</bad>"
                                           "<huge>99999999999</huge><min>-2147483648</min><inf>1e999</inf></v>");
    int32_t i = 5;
    float f = 5.0f;
    double d = 5.0;
    std::string s = "untouched";
    // Each query starts from the first child.
    auto query = [v](auto member, const char* name, auto& out) {
        v->startAttributes();
        return (v->*member)(name, out);
    };
    const auto asInt = &BaseParserElement::getNextAttributeValueInt;
    const auto asFloat = &BaseParserElement::getNextAttributeValueFloat;
    const auto asDouble = &BaseParserElement::getNextAttributeValueDouble;
    const auto asString = &BaseParserElement::getNextAttributeValueString;

    // Missing: false with the output untouched.
    EXPECT_FALSE(query(asInt, "missing", i) || query(asFloat, "missing", f) || query(asDouble, "missing", d) ||
                 query(asString, "missing", s));
    EXPECT_TRUE(i == 5 && f == 5.0f && d == 5.0 && s == "untouched");

    EXPECT_TRUE(query(asInt, "i", i) && i == 42);
    EXPECT_TRUE(query(asInt, "min", i) && i == INT32_MIN);
    EXPECT_TRUE(query(asFloat, "f", f) && f == 1500.0f);
    EXPECT_TRUE(query(asDouble, "d", d) && d == -0.25);
    EXPECT_TRUE(query(asString, "s", s) && s == " keep\n");

    // Unconvertible or out of range: false and 0.
    EXPECT_FALSE(query(asInt, "bad", i) || i != 0);
    i = 5;
    EXPECT_FALSE(query(asInt, "huge", i) || i != 0);
    EXPECT_FALSE(query(asFloat, "inf", f) || f != 0.0f);
    EXPECT_FALSE(query(asDouble, "bad", d) || d != 0.0);

    // The value pointer reaches into the tree.
    v->startAttributes();
    *v->getNextAttributeValue("s") = "changed";
    EXPECT_TRUE(query(asString, "s", s) && s == "changed");
}

}  // namespace
