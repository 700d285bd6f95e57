// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/content_filter.h"

#include <gtest/gtest.h>

#include <string>

namespace simulator::onvif::tests {

namespace {

Namespaces const tt{{"tt", "x"}, {"http://www.onvif.org/ver10/schema", "urn:x"}};

Message const inside(
    R"(<tt:Message><tt:Source><tt:SimpleItem Name="Rule" Value="door"/></tt:Source><tt:Data>)"
    R"(<tt:SimpleItem Name="IsInside" Value="false"/><tt:SimpleItem Name="Empty" Value=""/>)"
    R"(<tt:SimpleItem Name="Bare"/><tt:ElementItem Name="Shape" Value="round"/>)"
    R"(</tt:Data></tt:Message>)",
    tt);

std::string is(std::string const &name, std::string const &value) {
    return "boolean(//tt:SimpleItem[@Name=\"" + name + "\" and @Value=\"" + value + "\"])";
}

bool takes(std::string const &filter) {
    return ContentFilter(filter, tt).matches(inside);
}

std::string whyNot(std::string const &filter) {
    ContentFilter const read(filter, tt);
    EXPECT_FALSE(read.matches(inside)) << filter;
    return read.whyNot(inside);
}

std::string refusal(std::string const &filter, Namespaces const &namespaces = tt) {
    try {
        ContentFilter const read(filter, namespaces);
    } catch (SyntaxError const &error) {
        return error.what();
    }
    return "no refusal";
}

std::string const yes = is("Rule", "door");
std::string const no = is("IsInside", "true");

}  // namespace

TEST(ContentFilter, TakesMessagesWithTheItemItNames) {
    EXPECT_TRUE(takes(is("IsInside", "false")));
    EXPECT_FALSE(takes(is("IsInside", "true")));
    EXPECT_FALSE(takes(is("isInside", "false")));
    EXPECT_FALSE(takes(is("IsInside", "False")));
    // Name and value must be one item's.
    EXPECT_FALSE(takes(is("Rule", "false")));
}

TEST(ContentFilter, TakesEveryMessageWhenEmpty) {
    EXPECT_TRUE(takes(""));
    EXPECT_TRUE(takes(" \n"));
    EXPECT_TRUE(ContentFilter().matches(inside));
}

TEST(ContentFilter, TellsSimpleItemsFromElementItems) {
    EXPECT_TRUE(takes(R"(boolean(//tt:ElementItem[@Name="Shape"]))"));
    EXPECT_TRUE(takes(R"(boolean(//tt:ElementItem[@Name="Shape" and @Value="round"]))"));
    EXPECT_FALSE(takes(R"(boolean(//tt:SimpleItem[@Name="Shape"]))"));
    EXPECT_FALSE(takes(R"(boolean(//tt:ElementItem[@Name="Rule"]))"));
}

TEST(ContentFilter, AnAttributeThatIsMissingIsEqualToNothing) {
    EXPECT_TRUE(takes(is("Empty", "")));
    EXPECT_FALSE(takes(is("Bare", "")));
    EXPECT_TRUE(takes(R"(boolean(//tt:SimpleItem[@Name="Bare" and not(@Value="")]))"));
}

TEST(ContentFilter, JoinsConditionsAndTests) {
    EXPECT_TRUE(takes(yes + " or " + no));
    EXPECT_FALSE(takes(yes + " and " + no));
    EXPECT_TRUE(takes("not(" + no + ")"));
    EXPECT_FALSE(takes("not(" + yes + ")"));
    EXPECT_TRUE(takes(yes + "and not(" + no + ")"));
    EXPECT_TRUE(takes(R"(boolean(//tt:SimpleItem[@Name="IsInside" and (@Value="true" or @Value="false")]))"));
    EXPECT_TRUE(takes(R"(boolean(//tt:SimpleItem[not(@Name="Rule") and @Value="false"]))"));
    EXPECT_TRUE(takes(R"(boolean(//tt:SimpleItem[@Value="nothing" or @Value="door"]))"));
}

TEST(ContentFilter, AndBindsTighterThanOr) {
    // As (yes or (yes and no)) it holds, as ((yes or yes) and no) it would not.
    EXPECT_TRUE(takes(yes + " or " + yes + " and " + no));
    EXPECT_TRUE(takes(no + " and " + yes + " or " + yes));
    EXPECT_FALSE(takes("(" + yes + " or " + yes + ") and " + no));
}

TEST(ContentFilter, TakesBlanksBetweenItsTokens) {
    EXPECT_TRUE(
        takes("\n not ( boolean ( // tt:SimpleItem [ @Name = \"IsInside\"\tand\t@ Value = \"true\" ] ) ) "));
    EXPECT_TRUE(takes(R"(boolean(//tt:SimpleItem[@Name="Rule"and@Value="door"])or()" + no + ")"));
}

TEST(ContentFilter, IsRefusedWithItsColumnAndWhatWasProbablyMeant) {
    struct Case {
        std::string text;
        char const *error;
    };
    Case const cases[] = {
        {R"(boolean(//tt:SimpleItem[@Name='IsMotion' and @Value='true']))",
         "column 31: these are not the quotes that filters have; write straight double ones: \"true\""},
        {"boolean(//tt:SimpleItem[@Name=\u201cIsMotion\u201d])", "column 31: these are not the quotes"},
        {R"(//tt:SimpleItem[@Name="a"])",
         "column 1: a condition is written boolean(//tt:SimpleItem[...]); \"boolean(\" is missing here"},
        {R"(@Name="a")", "column 1: a condition is written boolean("},
        {yes + R"( and //tt:SimpleItem[@Name="a"])", "column 62: a condition is written boolean("},
        {R"(boolean(//SimpleItem[@Name="a"]))",
         "column 11: SimpleItem has no prefix; write tt:SimpleItem and give tt in the lists of namespace "
         "keys and "
         "URIs; the URI is \"http://www.onvif.org/ver10/schema\""},
        {R"(boolean(//ns:SimpleItem[@Name="a"]))",
         "column 11: the prefix \"ns\" stands for no namespace; give it"},
        {R"(boolean(//x:SimpleItem[@Name="a"]))",
         "column 11: the prefix stands for \"urn:x\", and must stand for "
         "\"http://www.onvif.org/ver10/schema\""},
        {R"(boolean(//tt:Item[@Name="a"]))",
         "column 11: SimpleItem or ElementItem is expected here, not \"Item\""},
        {R"(boolean(/tt:SimpleItem[@Name="a"]))", "column 9: \"//\" is expected here"},
        {R"(boolean(//tt:SimpleItem))",
         "column 24: \"[\" with tests of @Name and @Value is expected here, not \")\""},
        {R"(boolean(//tt:SimpleItem[]))", "column 25: @Name or @Value is expected here, not \"]\""},
        {R"(boolean(//tt:SimpleItem[Name="a"]))", "column 25: @Name or @Value is expected here, not \"N\""},
        {R"(boolean(//tt:SimpleItem[@name="a"]))", "column 26: the attributes of items are @Name and @Value"},
        {R"(boolean(//tt:SimpleItem[@Value>"a"]))",
         "column 31: \"=\" is expected here, not \">\"; texts are compared"},
        {R"(boolean(//tt:SimpleItem[@Value!="a"]))", "column 31: \"=\" is expected here, not \"!\""},
        {R"(boolean(//tt:SimpleItem[@Value=5]))",
         "column 32: a text in double quotes is expected here, as in @Value=\"true\", not \"5\""},
        {R"(boolean(//tt:SimpleItem[@Value="a]))",
         "column 33: the text that begins here has no \" at its end"},
        {R"(boolean(//tt:SimpleItem[@Name="a" @Value="b"]))",
         "column 35: \"and\", \"or\" or \"]\" is expected here, not \"@\""},
        {R"(boolean(//tt:SimpleItem[@Name="a"])", "column 35: \")\" is expected here, not the end"},
        {yes + ")", "column 57: this \")\" closes nothing"},
        {"(" + yes, "column 58: \")\" is expected here, not the end"},
        {yes + " & " + yes, "column 58: \"and\", \"or\" or the end is expected here, not \"&\""},
        {yes + " and", "column 61: boolean(...), not(...) or \"(\" is expected here, not the end"},
        {"not " + yes, "column 5: \"(\" is expected behind \"not\", not \"b\""},
        {"true", "column 1: boolean(...), not(...) or \"(\" is expected here, not \"t\""},
        {"IsMotion=true", "column 1: boolean(...), not(...) or \"(\" is expected here, not \"I\""},
    };
    for (Case const &one : cases) {
        std::string const expected = std::string("the content filter, ") + one.error;
        EXPECT_EQ(refusal(one.text).substr(0, expected.size()), expected) << one.text;
    }
}

TEST(ContentFilter, IsBoundedInLengthAndDepth) {
    auto const nested = [](std::size_t depth) {
        return std::string(depth, '(') + yes + std::string(depth, ')');
    };
    EXPECT_TRUE(takes(nested(100)));
    EXPECT_EQ(refusal(nested(101)), "the content filter, column 101: more than 100 brackets in one another");
    EXPECT_EQ(refusal(nested(1000)), "the content filter, column 101: more than 100 brackets in one another");
    std::string negations;
    for (int n = 0; n < 1000; ++n) {
        negations += "not(";
    }
    EXPECT_EQ(refusal(negations), "the content filter, column 401: more than 100 brackets in one another");
    EXPECT_EQ(refusal(std::string(64 * 1024, ' ')),
              "the content filter: it has 65536 bytes, and 32768 are the most");
    // As many conditions as fit, one after the other.
    std::string chain = no;
    while (chain.size() + 4 + no.size() <= 32 * 1024) {
        chain += " or " + no;
    }
    EXPECT_FALSE(takes(chain));
}

TEST(ContentFilter, NamesThePieceThatAMessageFails) {
    EXPECT_EQ(whyNot(no), "\"IsInside\" was \"false\", the filter wants \"true\"");
    EXPECT_EQ(whyNot(yes + " and " + no + " and " + is("Rule", "gate")),
              "\"IsInside\" was \"false\", the filter wants \"true\"");
    EXPECT_EQ(whyNot(is("Missing", "1")), "the message has no SimpleItem \"Missing\"");
    EXPECT_EQ(whyNot(R"(boolean(//tt:ElementItem[@Name="Rule"]))"),
              "the message has no ElementItem \"Rule\"");
    EXPECT_EQ(whyNot("not(" + yes + ")"), "\"Rule\" was \"door\", which the filter excludes");
    EXPECT_EQ(whyNot("not(" + no + " or " + yes + ")"), "\"Rule\" was \"door\", which the filter excludes");
    EXPECT_EQ(whyNot(no + " or " + is("Rule", "gate")),
              "\"IsInside\" was \"false\", the filter wants \"true\"");
    EXPECT_EQ(whyNot(is("Bare", "1")), "\"Bare\" was without a value, the filter wants \"1\"");
    EXPECT_EQ(whyNot(R"(boolean(//tt:SimpleItem[@Value="7"]))"),
              "the message has no SimpleItem that the filter asks for");
    EXPECT_EQ(whyNot(R"(boolean(//tt:SimpleItem[@Name="IsInside" and (@Value="1" or @Value="true")]))"),
              "\"IsInside\" was \"false\", the filter wants \"1\", \"true\"");
}

}  // namespace simulator::onvif::tests
