// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/event.h"

#include <gtest/gtest.h>

namespace simulator::onvif::tests {

namespace {

bool matches(std::string_view filter, char const *topic) {
    return topicMatches(filter, {}, {topic, "", {}});
}

}  // namespace

TEST(TopicFilter, LetsItsOwnTopicThrough) {
    EXPECT_TRUE(matches("tns1:Device/Trigger/Relay", "tns1:Device/Trigger/Relay"));
    EXPECT_TRUE(matches("  tns1:Device/Trigger/Relay\n", "tns1:Device/Trigger/Relay"));
    EXPECT_FALSE(matches("tns1:Device/Trigger/Relay", "tns1:Device/Trigger"));
    EXPECT_FALSE(matches("tns1:Device/Trigger", "tns1:Device/Trigger/Relay"));
    EXPECT_FALSE(matches("tns1:Device/Trigger", "tns1:device/trigger"));
    EXPECT_FALSE(matches("tns1:Device", ""));
}

TEST(TopicFilter, LetsEveryTopicThroughWhenEmpty) {
    EXPECT_TRUE(matches("", "tns1:Device"));
    EXPECT_TRUE(matches(" ", ""));
}

TEST(TopicFilter, LetsEachOfItsAlternativesThrough) {
    EXPECT_TRUE(matches("a/b|c/d", "a/b"));
    EXPECT_TRUE(matches("a/b | c/d", "c/d"));
    EXPECT_FALSE(matches("a/b|c/d", "a/b|c/d"));
    EXPECT_FALSE(matches("a/b|c/d", "a"));
}

TEST(TopicFilter, WithASubtreeLetsTheTopicAndAllBelowItThrough) {
    EXPECT_TRUE(matches("tns1:Device//.", "tns1:Device"));
    EXPECT_TRUE(matches("tns1:Device//.", "tns1:Device/Trigger/Relay"));
    EXPECT_TRUE(matches("x|tns1:Device//.", "tns1:Device/Trigger"));
    EXPECT_FALSE(matches("tns1:Device//.", "tns1:Devices"));
    EXPECT_FALSE(matches("tns1:Device//.", "tns1:Devices/Trigger"));
    EXPECT_FALSE(matches("tns1:Device/Trigger//.", "tns1:Device"));
}

TEST(TopicFilter, ComparesPrefixesByTheirUris) {
    Namespaces const filter_namespaces{{"a", "b"}, {"urn:one", "urn:two"}};
    EXPECT_TRUE(topicMatches("a:Device/b:Own", filter_namespaces,
                             {"x:Device/y:Own", "", {{"y", "x"}, {"urn:two", "urn:one"}}}));
    EXPECT_FALSE(topicMatches("a:Device", filter_namespaces, {"a:Device", "", {{"a"}, {"urn:other"}}}));
    EXPECT_FALSE(topicMatches("a:Device", filter_namespaces, {"a:Device", "", {}}));
    EXPECT_TRUE(topicMatches("a:Device//.", filter_namespaces, {"x:Device/Relay", "", {{"x"}, {"urn:one"}}}));
}

TEST(TopicFilter, TakesAKeyWithoutAUriByItsLetters) {
    EXPECT_TRUE(topicMatches("b:Device", {{"a", "b"}, {"urn:one"}}, {"b:Device", "", {}}));
}

TEST(ContentFilter, LetsMessagesThroughThatHoldItsText) {
    Event const event{"t", "State=true Source=1", {}};
    EXPECT_TRUE(contentMatches("State=true", event));
    EXPECT_TRUE(contentMatches("", event));
    EXPECT_FALSE(contentMatches("State=false", event));
    EXPECT_FALSE(contentMatches("state=true", event));
}

}  // namespace simulator::onvif::tests
