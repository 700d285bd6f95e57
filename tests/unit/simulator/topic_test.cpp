// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/topic.h"

#include <gtest/gtest.h>

namespace simulator::onvif::tests {

namespace {

Namespaces const topics{{"tns1", "own"}, {"http://www.onvif.org/ver10/topics", "urn:own"}};

TopicFilter filter(std::string_view text, std::string_view dialect = "") {
    return {text, dialect, topics};
}

bool matches(std::string_view text, std::string_view topic) {
    return filter(text).matches(parseTopic(topic, topics));
}

std::string refusal(std::string_view text, std::string_view dialect = "") {
    try {
        filter(text, dialect);
    } catch (SyntaxError const &error) {
        return error.what();
    }
    return "no refusal";
}

}  // namespace

TEST(TopicFilter, TakesItsOwnTopic) {
    EXPECT_TRUE(matches("tns1:Device/Trigger/Relay", "tns1:Device/Trigger/Relay"));
    EXPECT_TRUE(matches("  tns1:Device/Trigger/Relay\n", "\ttns1:Device/Trigger/Relay "));
    EXPECT_FALSE(matches("tns1:Device/Trigger/Relay", "tns1:Device/Trigger"));
    EXPECT_FALSE(matches("tns1:Device/Trigger", "tns1:Device/Trigger/Relay"));
    EXPECT_FALSE(matches("tns1:Device/Trigger", "tns1:device/trigger"));
    EXPECT_FALSE(matches("tns1:Device", ""));
}

TEST(TopicFilter, TakesEveryTopicWhenEmpty) {
    EXPECT_TRUE(matches("", "tns1:Device"));
    EXPECT_TRUE(matches(" ", ""));
    EXPECT_TRUE(filter("", concrete_dialect).matches(parseTopic("a", topics)));
}

TEST(TopicFilter, TakesEachOfItsAlternatives) {
    EXPECT_TRUE(matches("a/b|c/d", "a/b"));
    EXPECT_TRUE(matches("a/b | c/d", "c/d"));
    EXPECT_FALSE(matches("a/b|c/d", "a"));
    EXPECT_FALSE(matches("a/b|c/d", "c"));
}

TEST(TopicFilter, WithAllBelowTakesTheTopicAndWhatIsBelow) {
    EXPECT_TRUE(matches("tns1:Device//.", "tns1:Device"));
    EXPECT_TRUE(matches("tns1:Device//.", "tns1:Device/Trigger/Relay"));
    EXPECT_TRUE(matches("x|tns1:Device//.", "tns1:Device/Trigger"));
    EXPECT_TRUE(matches("tns1:Device//.|x", "x"));
    EXPECT_FALSE(matches("tns1:Device//.", "tns1:Devices"));
    EXPECT_FALSE(matches("tns1:Device//.", "tns1:Devices/Trigger"));
    EXPECT_FALSE(matches("tns1:Device/Trigger//.", "tns1:Device"));
    EXPECT_FALSE(matches("x//.|tns1:Device", "tns1:Device/Trigger"));
}

TEST(TopicFilter, ComparesNamesByTheUrisOfTheirPrefixes) {
    TopicFilter const both("a:Device/b:Own", "", {{"a", "b"}, {"urn:one", "urn:two"}});
    EXPECT_TRUE(both.matches(parseTopic("x:Device/y:Own", {{"y", "x"}, {"urn:two", "urn:one"}})));
    EXPECT_FALSE(both.matches(parseTopic("a:Device/b:Own", {{"b", "a"}, {"urn:one", "urn:two"}})));
    EXPECT_FALSE(both.matches(parseTopic("Device/Own", {})));
    TopicFilter const plain("Device", "", {});
    EXPECT_FALSE(plain.matches(parseTopic("a:Device", {{"a"}, {"urn:one"}})));
}

TEST(TopicFilter, TakesTheFirstOfTwoEqualPrefixes) {
    TopicFilter const twice("a:Device", "", {{"a", "a"}, {"urn:one", "urn:two"}});
    EXPECT_TRUE(twice.matches(parseTopic("x:Device", {{"x"}, {"urn:one"}})));
    EXPECT_FALSE(twice.matches(parseTopic("x:Device", {{"x"}, {"urn:two"}})));
}

TEST(TopicFilter, IsRefusedWithItsColumnAndWhatWasProbablyMeant) {
    struct Case {
        char const *text;
        char const *error;
    };
    Case const cases[] = {
        {"tns1:Device/*",
         "the topic filter, column 13: \"*\" stands for no name here; name the topic, or write \"//.\" "
         "behind the "
         "topic above for it and all below it"},
        {"*", "the topic filter, column 1: \"*\" stands for no name here; "},
        {"tns1:Device/.", "the topic filter, column 13: \".\" stands for no name here; "},
        {"tns1:Device//Relay",
         "the topic filter, column 12: \"//\" stands only in \"//.\" at the end of a topic; between names "
         "write "
         "\"/\""},
        {"//tns1:Device", "the topic filter, column 1: a name is expected here, not \"/\""},
        {"tns1:Device//.x",
         "the topic filter, column 15: \"|\" or the end is expected behind \"//.\", not \"x\""},
        {"tns1:Device//./x",
         "the topic filter, column 15: \"|\" or the end is expected behind \"//.\", not \"/\""},
        {"tt:Device",
         "the topic filter, column 1: the prefix \"tt\" stands for no namespace; give it with its URI in the "
         "lists "
         "of namespace keys and URIs"},
        {"tns1:Device/tt:Relay", "the topic filter, column 13: the prefix \"tt\" stands for no namespace"},
        {"tns1:", "the topic filter, column 6: a name is expected behind the prefix \"tns1\", not the end"},
        {"a/", "the topic filter, column 3: a name is expected here, not the end"},
        {"a|", "the topic filter, column 3: a name is expected here, not the end"},
        {"|a", "the topic filter, column 1: a name is expected here, not \"|\""},
        {"a||b", "the topic filter, column 3: a name is expected here, not \"|\""},
        {"a b", "the topic filter, column 3: \"/\", \"//.\", \"|\" or the end is expected here, not \"b\""},
        {"a/ b", "the topic filter, column 3: a name is expected here, not \" \""},
        {"1a", "the topic filter, column 1: a name is expected here, not \"1\""},
        // Columns count characters, of which some have several bytes.
        {"T\u00fcr/\u20ac/", "the topic filter, column 7: a name is expected here, not the end"},
    };
    for (Case const &one : cases) {
        EXPECT_EQ(refusal(one.text).substr(0, std::string_view(one.error).size()), one.error);
    }
}

TEST(TopicFilter, InTheConcreteDialectIsOneTopic) {
    EXPECT_TRUE(filter("a/b", concrete_dialect).matches(parseTopic("a/b", topics)));
    EXPECT_EQ(refusal("a//.", concrete_dialect),
              "the topic filter, column 2: the Concrete dialect has no \"//.\"; give the dialect "
              "\"http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet\" for it");
    EXPECT_EQ(
        refusal("a | b", concrete_dialect),
        "the topic filter, column 3: the Concrete dialect has no \"|\"; give the dialect "
        "\"http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet\" for it, or make a trigger for each "
        "topic");
}

TEST(TopicFilter, HasOneOfTwoDialects) {
    EXPECT_TRUE(filter("a|b//.", concrete_set_dialect).matches(parseTopic("b/c", topics)));
    EXPECT_EQ(
        refusal("a", "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Full"),
        "the topic filter has the dialect \"http://docs.oasis-open.org/wsn/t-1/TopicExpression/Full\", which "
        "is none of \"http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete\", "
        "\"http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet\" and \"\" for the latter");
    EXPECT_NE(refusal("", "other"), "no refusal");
}

TEST(TopicFilter, IsBounded) {
    EXPECT_EQ(refusal(std::string(32 * 1024, 'a')), "no refusal");
    EXPECT_EQ(refusal(std::string(32 * 1024 + 1, 'a')),
              "the topic filter: it has 32769 bytes, and 32768 are the most");
    std::string many = "a";
    while (many.size() + 2 <= 32 * 1024) {
        many += "/a";
    }
    EXPECT_TRUE(matches(many, many));
}

TEST(Topic, OfAnEventIsOnePath) {
    EXPECT_TRUE(parseTopic(" ", topics).empty());
    Topic const topic = parseTopic("tns1:A/b", topics);
    ASSERT_EQ(topic.size(), 2U);
    EXPECT_EQ(topic[0].uri, "http://www.onvif.org/ver10/topics");
    EXPECT_EQ(topic[0].local, "A");
    EXPECT_EQ(topic[1].uri, "");
    EXPECT_EQ(topic[1].local, "b");
    for (char const *const wrong : {"a|b", "a//.", "a/", "/a", "x:a", "a b", "*"}) {
        EXPECT_THROW(parseTopic(wrong, topics), SyntaxError) << wrong;
    }
}

}  // namespace simulator::onvif::tests
