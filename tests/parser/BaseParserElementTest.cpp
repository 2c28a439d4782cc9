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
    BaseParserElement* v = firstOf(parser, "<v><i> 42xyz</i><f>1.5e3</f><d>-0.25</d><s> keep\n</s><min>-2147483648</min>"
                                           "<bad>abc</bad><huge>99999999999</huge><inf>1e999</inf><nan>x</nan></v>");
    int32_t i = 0;
    float f = 0.0f;
    double d = 0.0;
    std::string s;
    // In file order, so one walk of the cursor reaches them all.
    v->startAttributes();
    EXPECT_TRUE(v->getNextAttributeValueInt("i", i) && i == 42);
    EXPECT_TRUE(v->getNextAttributeValueFloat("f", f) && f == 1500.0f);
    EXPECT_TRUE(v->getNextAttributeValueDouble("d", d) && d == -0.25);
    EXPECT_TRUE(v->getNextAttributeValueString("s", s) && s == " keep\n");
    EXPECT_TRUE(v->getNextAttributeValueInt("min", i) && i == INT32_MIN);
    // Unconvertible or out of range: false and 0.
    EXPECT_FALSE(v->getNextAttributeValueInt("bad", i) || i != 0);
    i = 5;
    EXPECT_FALSE(v->getNextAttributeValueInt("huge", i) || i != 0);
    EXPECT_FALSE(v->getNextAttributeValueFloat("inf", f) || f != 0.0f);
    EXPECT_FALSE(v->getNextAttributeValueDouble("nan", d) || d != 0.0);

    // Missing: false with the output untouched.
    i = 5;
    f = 5.0f;
    d = 5.0;
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueInt("no", i) || v->getNextAttributeValueFloat("no", f) ||
                 v->getNextAttributeValueDouble("no", d) || v->getNextAttributeValueString("no", s));
    EXPECT_TRUE(i == 5 && f == 5.0f && d == 5.0 && s == " keep\n");
}

}  // namespace
