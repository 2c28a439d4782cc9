#include "parser/Parser.h"
#include "parser/Token.h"
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
    // A fresh element's cursor stands at the end.
    EXPECT_EQ(r->getNextAttribute("b"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("b")->getValue(), "1");
    EXPECT_EQ(r->getNextAttribute("b")->getValue(), "2");
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("y")->getValue(), "3");
    // The first two b were stepped over while looking for y.
    EXPECT_EQ(r->getNextAttribute("b")->getValue(), "4");
    EXPECT_EQ(r->getNextAttribute("b"), nullptr);
    // The failed lookup used up the children: z is out of reach until a restart.
    EXPECT_EQ(r->getNextAttribute("z"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("z")->getValue(), "5");
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("B"), nullptr);

    // A walked list does not pick up children added afterwards.
    korvel::Token* late = new korvel::Token();
    late->setName("late");
    r->addAttribute(late);
    EXPECT_EQ(r->getNextAttribute("late"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("late"), late);
}

TEST(BaseParserElementTest, ValueQueriesConvertOrTellWhyNot)
{
    Parser parser;
    BaseParserElement* v = firstOf(parser, "<v><i> 42xyz</i><f>1.5e3</f><d>-0.25</d><s> keep\n</s><bad>abc</bad>"
                                           "<huge>99999999999</huge><min>-2147483648</min><inf>1e999</inf></v>");
    auto asInt = [&](const char* name, int32_t& out) { v->startAttributes(); return v->getNextAttributeValueInt(name, out); };
    auto asFloat = [&](const char* name, float& out) { v->startAttributes(); return v->getNextAttributeValueFloat(name, out); };
    auto asDouble = [&](const char* name, double& out) { v->startAttributes(); return v->getNextAttributeValueDouble(name, out); };
    auto asString = [&](const char* name, std::string& out) { v->startAttributes(); return v->getNextAttributeValueString(name, out); };
    int32_t i = 5;
    float f = 5.0f;
    double d = 5.0;
    std::string s = "untouched";

    // Missing: false with the output untouched.
    EXPECT_FALSE(asInt("missing", i));
    EXPECT_FALSE(asFloat("missing", f));
    EXPECT_FALSE(asDouble("missing", d));
    EXPECT_FALSE(asString("missing", s));
    EXPECT_EQ(i, 5);
    EXPECT_EQ(f, 5.0f);
    EXPECT_EQ(d, 5.0);
    EXPECT_EQ(s, "untouched");

    EXPECT_TRUE(asInt("i", i) && i == 42);
    EXPECT_TRUE(asInt("min", i) && i == INT32_MIN);
    EXPECT_TRUE(asFloat("f", f) && f == 1500.0f);
    EXPECT_TRUE(asDouble("d", d) && d == -0.25);
    EXPECT_TRUE(asString("s", s) && s == " keep\n");

    // Unconvertible or out of range: false and 0.
    for (const char* name : {"bad", "huge"}) {
        i = 5;
        EXPECT_FALSE(asInt(name, i) || i != 0) << name;
    }
    f = 5.0f;
    EXPECT_FALSE(asFloat("inf", f) || f != 0.0f);
    d = 5.0;
    EXPECT_FALSE(asDouble("bad", d) || d != 0.0);

    // The value pointer reaches into the tree.
    v->startAttributes();
    *v->getNextAttributeValue("s") = "changed";
    EXPECT_TRUE(asString("s", s) && s == "changed");
    v->startAttributes();
    EXPECT_EQ(v->getNextAttributeValue("missing"), nullptr);
}

}  // namespace
