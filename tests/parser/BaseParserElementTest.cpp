#include "parser/Parser.h"
#include "parser/Token.h"
#include "support/CaptureStdout.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using korvel::BaseParserElement;
using korvel::Parser;
using korvel::Token;

// Parses quietly and answers the first top-level element.
BaseParserElement* firstOf(Parser& parser, const std::string& text)
{
    CaptureStdout out;
    parser.parse(text);
    return parser.getModule()->getAttributes().at(0);
}

TEST(BaseParserElementTest, CursorOnlyMovesForwardUntilRestarted)
{
    Parser parser;
    BaseParserElement* a = firstOf(parser, "<a><b>1</b><b>2</b></a>");
    // A fresh element's cursor stands at the end.
    EXPECT_EQ(a->getNextAttribute("b"), nullptr);
    a->startAttributes();
    BaseParserElement* first = a->getNextAttribute("b");
    BaseParserElement* second = a->getNextAttribute("b");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(first->getValue(), "1");
    EXPECT_EQ(second->getValue(), "2");
    EXPECT_EQ(a->getNextAttribute("b"), nullptr);
    EXPECT_EQ(a->getNextAttribute("b"), nullptr);

    Parser other;
    BaseParserElement* r = firstOf(other, "<r><x>1</x><y>2</y><x>3</x><z>4</z></r>");
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("y")->getValue(), "2");
    // The first x was stepped over while looking for y.
    EXPECT_EQ(r->getNextAttribute("x")->getValue(), "3");
    EXPECT_EQ(r->getNextAttribute("y"), nullptr);
    // The failed lookup used up the children: z is gone until a restart.
    EXPECT_EQ(r->getNextAttribute("z"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("z")->getValue(), "4");
    // Names match exactly.
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("X"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("x "), nullptr);

    // A walked list does not pick up children added afterwards.
    Token* late = new Token();
    late->setName("late");
    r->addAttribute(late);
    r->addAttribute(nullptr);
    EXPECT_EQ(r->getNextAttribute("late"), nullptr);
    r->startAttributes();
    EXPECT_EQ(r->getNextAttribute("late"), late);
    EXPECT_EQ(r->getAttributes().size(), 5u);
}

TEST(BaseParserElementTest, ValueQueriesConvertOrReportWhyNot)
{
    Parser parser;
    BaseParserElement* v = firstOf(parser, "<v><i> 42xyz</i><f>1.5e3</f><d>-0.25</d><s> keep me\n</s>"
                                           "<bad>abc</bad><huge>99999999999</huge><neg>-2147483648</neg>"
                                           "<inf>1e999</inf></v>");
    int32_t i = 7;
    float f = 7.0f;
    double d = 7.0;
    std::string s = "untouched";

    v->startAttributes();
    EXPECT_TRUE(v->getNextAttributeValueInt("i", i));
    EXPECT_EQ(i, 42);
    v->startAttributes();
    EXPECT_TRUE(v->getNextAttributeValueFloat("f", f));
    EXPECT_FLOAT_EQ(f, 1500.0f);
    v->startAttributes();
    EXPECT_TRUE(v->getNextAttributeValueDouble("d", d));
    EXPECT_DOUBLE_EQ(d, -0.25);
    v->startAttributes();
    EXPECT_TRUE(v->getNextAttributeValueString("s", s));
    EXPECT_EQ(s, " keep me\n");
    v->startAttributes();
    EXPECT_TRUE(v->getNextAttributeValueInt("neg", i));
    EXPECT_EQ(i, INT32_MIN);

    // Missing: false and the output untouched.
    i = 5;
    f = 5.0f;
    d = 5.0;
    s = "still";
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueInt("missing", i));
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueFloat("missing", f));
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueDouble("missing", d));
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueString("missing", s));
    v->startAttributes();
    EXPECT_EQ(v->getNextAttributeValue("missing"), nullptr);
    EXPECT_EQ(i, 5);
    EXPECT_FLOAT_EQ(f, 5.0f);
    EXPECT_DOUBLE_EQ(d, 5.0);
    EXPECT_EQ(s, "still");

    // Unconvertible or out of range: false and 0.
    for (const char* name : {"bad", "huge"}) {
        i = 5;
        v->startAttributes();
        EXPECT_FALSE(v->getNextAttributeValueInt(name, i)) << name;
        EXPECT_EQ(i, 0) << name;
    }
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueFloat("bad", f));
    EXPECT_EQ(f, 0.0f);
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueFloat("inf", f));
    EXPECT_EQ(f, 0.0f);
    d = 5.0;
    v->startAttributes();
    EXPECT_FALSE(v->getNextAttributeValueDouble("bad", d));
    EXPECT_EQ(d, 0.0);

    // The value pointer reaches into the tree.
    v->startAttributes();
    std::string* text = v->getNextAttributeValue("s");
    ASSERT_NE(text, nullptr);
    *text = "changed";
    v->startAttributes();
    EXPECT_EQ(v->getNextAttribute("s")->getValue(), "changed");
}

TEST(BaseParserElementTest, ReleaseAttributesDeletesTheWholeSubtree)
{
    Parser parser;
    BaseParserElement* a = firstOf(parser, "<a><b><c>1</c><c>2</c></b><d>3</d></a>");
    const std::size_t before = Object::countInstances();
    a->releaseAttributes();
    EXPECT_TRUE(a->getAttributes().empty());
    EXPECT_EQ(Object::countInstances(), before - 4);
    a->startAttributes();
    EXPECT_EQ(a->getNextAttribute("b"), nullptr);
    EXPECT_EQ(a->getName(), "a");
    EXPECT_STREQ(a->getInstanceClassName(), "Token");
    EXPECT_STREQ(parser.getModule()->getInstanceClassName(), "Module");
}

}  // namespace
