// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/message.h"

#include <gtest/gtest.h>

namespace simulator::onvif::tests {

namespace {

Namespaces const tt{{"tt"}, {"http://www.onvif.org/ver10/schema"}};

/// "simple NAME=VALUE" for each item, with commas between; "-" is a missing attribute.
std::string items(std::string const &text, Namespaces const &namespaces = tt) {
    std::string shown;
    Message const message(text, namespaces);
    for (Item const &item : message.items()) {
        shown += (shown.empty() ? "" : ", ") +
                 std::string(item.kind == ItemKind::simple ? "simple " : "element ") +
                 item.name.value_or("-") + "=" + item.value.value_or("-");
    }
    return shown;
}

std::string property(std::string const &text) {
    return Message(text, tt).property();
}

std::string refusal(std::string const &text, Namespaces const &namespaces = tt) {
    try {
        Message const message(text, namespaces);
    } catch (MessageError const &error) {
        return error.what();
    }
    return "no refusal";
}

}  // namespace

TEST(Message, HasTheItemsThatStandAnywhereInIt) {
    EXPECT_EQ(
        items(R"(<tt:Message UtcTime="2026-11-21T08:00:00Z"><tt:Source><tt:SimpleItem Name="a" Value="1"/>)"
              R"(</tt:Source><tt:Data><tt:SimpleItem Name="b" Value="2"/><tt:ElementItem Name="c"><x/>)"
              R"(</tt:ElementItem></tt:Data></tt:Message>)"),
        "simple a=1, simple b=2, element c=-");
    EXPECT_EQ(items(R"(<tt:SimpleItem Value="only"/>)"), "simple -=only");
    EXPECT_EQ(items("<other/>"), "");
}

TEST(Message, FindsItsNamespacesInItsDeclarationsAndElseInTheEvent) {
    EXPECT_EQ(items(R"(<SimpleItem xmlns="http://www.onvif.org/ver10/schema" Name="a"/>)", {}), "simple a=-");
    EXPECT_EQ(items(R"(<x:SimpleItem xmlns:x="http://www.onvif.org/ver10/schema" Name="a"/>)", {}),
              "simple a=-");
    // A declaration holds for its element and those in it, and goes before the event's.
    EXPECT_EQ(
        items(
            R"(<tt:M><tt:A xmlns:tt="urn:other"><tt:SimpleItem Name="a"/></tt:A><tt:SimpleItem Name="b"/></tt:M>)"),
        "simple b=-");
    EXPECT_EQ(
        items(
            R"(<tt:A xmlns:tt="urn:other"><tt:B xmlns:tt="http://www.onvif.org/ver10/schema"><tt:SimpleItem Name="a"/></tt:B><tt:SimpleItem Name="b"/></tt:A>)"),
        "simple a=-");
    EXPECT_EQ(items(R"(<SimpleItem Name="a"/>)"), "");
}

TEST(Message, ReadsCharactersAsXmlDoes) {
    EXPECT_EQ(items("<tt:SimpleItem Name='&lt;&amp;&quot;&#65;&#xe4;' Value='\u20ac'/>"),
              "simple <&\"A\u00e4=\u20ac");
}

TEST(Message, NamesItsPropertyByTheItemsInSourceAndKeyInAnyOrder) {
    auto const message = [](std::string const &source, std::string const &key, std::string const &data) {
        return "<tt:Message><tt:Source>" + source + "</tt:Source><tt:Key>" + key + "</tt:Key><tt:Data>" +
               data + "</tt:Data></tt:Message>";
    };
    std::string const one = R"(<tt:SimpleItem Name="a" Value="1"/>)";
    std::string const two = R"(<tt:SimpleItem Name="b" Value="2"/>)";
    std::string const base = property(message(one + two, "", one));
    EXPECT_EQ(property(message(two + one, "", two)), base);
    EXPECT_EQ(property(message(two, one, "")), base);
    EXPECT_NE(property(message(one, "", "")), base);
    EXPECT_NE(property(message(one + R"(<tt:SimpleItem Name="b" Value="3"/>)", "", "")), base);
    EXPECT_NE(property(message(R"(<tt:SimpleItem Name="ab" Value="c"/>)", "", "")),
              property(message(R"(<tt:SimpleItem Name="a" Value="bc"/>)", "", "")));
    EXPECT_NE(property(message(R"(<tt:ElementItem Name="e"><x y="1"/></tt:ElementItem>)", "", "")),
              property(message(R"(<tt:ElementItem Name="e"><x y="2"/></tt:ElementItem>)", "", "")));
    EXPECT_EQ(property("<tt:Message/>"), "");
}

TEST(Message, TellsWhetherThePropertyIsNoMore) {
    EXPECT_TRUE(Message(R"(<tt:Message PropertyOperation="Deleted"/>)", tt).deletes());
    EXPECT_FALSE(Message(R"(<tt:Message PropertyOperation="Changed"/>)", tt).deletes());
    EXPECT_FALSE(Message("<tt:Message/>", tt).deletes());
    EXPECT_FALSE(Message(R"(<other PropertyOperation="Deleted"/>)", tt).deletes());
}

TEST(Message, ThatIsNoXmlIsRefused) {
    for (std::string const &text :
         {std::string(), std::string(" "), std::string("State=true"), std::string("<a>"),
          std::string("<a></b>"), std::string("<a b=c/>"), std::string("<a/>text"), std::string("text<a/>"),
          std::string("<a/><b/>"), std::string("<!-- only -->"), std::string("<a/>\0<b/>", 9),
          std::string("<![CDATA[x]]><a/>")}) {
        EXPECT_EQ(refusal(text).substr(0, 23), "the message is no XML: ") << text;
    }
    EXPECT_EQ(refusal("<?xml version='1.0' encoding='UTF-8'?>\n<!-- note --><a/>\n"), "no refusal");
}

TEST(Message, WithADocumentTypeIsRefused) {
    EXPECT_EQ(refusal("<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>"),
              "the message has a document type, which no message needs; leave it out");
}

TEST(Message, WithAPrefixThatNobodyDeclaresIsRefused) {
    EXPECT_EQ(refusal("<tt:Message/>", {}),
              "the message's element \"tt:Message\" has the prefix \"tt\", which stands for no namespace; "
              "declare it "
              "in the message, or give it with its URI in the event's lists of namespace keys and URIs");
}

TEST(Message, IsBoundedInDepthAndNotInWidth) {
    auto const nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t n = 0; n < depth; ++n) {
            text = "<a>" + text + "</a>";
        }
        return text;
    };
    EXPECT_EQ(refusal(nested(100)), "no refusal");
    EXPECT_EQ(refusal(nested(101)), "the message has more than 100 elements in one another");
    std::string deep;
    for (int n = 0; n < 150'000; ++n) {
        deep += "<a>";
    }
    EXPECT_NE(refusal(deep), "no refusal");
    for (int n = 0; n < 150'000; ++n) {
        deep += "</a>";
    }
    EXPECT_EQ(refusal(deep), "the message has more than 100 elements in one another");

    std::string wide = "<tt:Message>";
    for (int n = 0; n < 10'000; ++n) {
        wide += R"(<tt:SimpleItem Name="n)" + std::to_string(n) + R"(" Value="v"/>)";
    }
    Message const message(wide + "</tt:Message>", tt);
    EXPECT_EQ(message.items().size(), 10'000U);
    EXPECT_EQ(message.itemsNamed("n9999").size(), 1U);
    EXPECT_TRUE(message.itemsNamed("n10000").empty());
}

}  // namespace simulator::onvif::tests
