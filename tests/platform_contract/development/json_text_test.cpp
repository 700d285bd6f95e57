// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "json_reader.h"
#include "json_writer.h"
#include "utf8.h"

using json_text::isUtf8;
using json_text::read;
using json_text::write;

namespace {

std::string textOf(json::UnknownElement const &value) {
    json::Object object;
    object["v"] = value;
    std::string text;
    EXPECT_EQ(write(object, text), "");
    return text;
}

std::string problemOfWriting(json::UnknownElement const &value) {
    json::Object object;
    object["v"] = value;
    std::string text;
    return write(object, text);
}

std::string problemOfReading(std::string const &text) {
    json::Object object;
    return read(text, object);
}

json::Object objectOf(std::string const &text) {
    json::Object object;
    EXPECT_EQ(read(text, object), "") << text;
    return object;
}

std::string nested(int depth) {
    // An object is the first level.
    return "{\"v\":" + std::string(static_cast<std::size_t>(depth - 1), '[') +
           std::string(static_cast<std::size_t>(depth - 1), ']') + "}";
}

}  // namespace

TEST(JsonWriter, WritesMembersInTheirOrder) {
    json::Object object;
    object["command"] = json::String("Get_relay_action");
    object["action_id"] = json::Number(17);
    object["again"] = json::Boolean(true);
    object["never"] = json::Boolean(false);
    object["nothing"] = json::Null();
    object["empty"] = json::Object();
    json::Array list;
    list.Insert(json::Number(1));
    list.Insert(json::String("two"));
    list.Insert(json::Array());
    object["list"] = list;
    std::string text = "before ";
    EXPECT_EQ(write(object, text), "");
    EXPECT_EQ(text,
              "before {\"command\":\"Get_relay_action\",\"action_id\":17,\"again\":true,\"never\":false,"
              "\"nothing\":null,\"empty\":{},\"list\":[1,\"two\",[]]}");
}

TEST(JsonWriter, WritesWholeNumbersWithoutAFraction) {
    EXPECT_EQ(textOf(json::Number(0)), "{\"v\":0}");
    EXPECT_EQ(textOf(json::Number(-0.0)), "{\"v\":0}");
    EXPECT_EQ(textOf(json::Number(-5)), "{\"v\":-5}");
    EXPECT_EQ(textOf(json::Number(2147483648.0)), "{\"v\":2147483648}");
    EXPECT_EQ(textOf(json::Number(4294967295.0)), "{\"v\":4294967295}");
    EXPECT_EQ(textOf(json::Number(4294967296.0)), "{\"v\":4294967296}");
    EXPECT_EQ(textOf(json::Number(9007199254740992.0)), "{\"v\":9007199254740992}");
}

TEST(JsonWriter, WritesNumbersSoThatTheyReadBackTheSame) {
    for (double const number :
         {0.1, -2.5, 1e300, 5e-324, 1.0 / 3.0, 123456789.125, 1e22, 9007199254740994.0}) {
        json::Object const object = objectOf(textOf(json::Number(number)));
        EXPECT_EQ(object["v"].CastTo<json::Number>().value(), number);
    }
}

TEST(JsonWriter, RefusesNumbersThatJsonDoesNotHave) {
    EXPECT_NE(problemOfWriting(json::Number(std::numeric_limits<double>::infinity())), "");
    EXPECT_NE(problemOfWriting(json::Number(std::nan(""))), "");
}

TEST(JsonWriter, EscapesTexts) {
    EXPECT_EQ(textOf(json::String("\"\\/\n\r\t\b\x01\x1f\x7f\xc3\xa4")),
              "{\"v\":\"\\\"\\\\/\\n\\r\\t\\u0008\\u0001\\u001f\x7f\xc3\xa4\"}");
    EXPECT_EQ(textOf(json::String(std::string("a\0b", 3))), "{\"v\":\"a\\u0000b\"}");
}

TEST(JsonWriter, RefusesTextsThatAreNotUtf8) {
    EXPECT_NE(problemOfWriting(json::String("caf\xe9")), "");
    json::Object object;
    object["\xff"] = json::Null();
    std::string text;
    EXPECT_NE(write(object, text), "");
}

TEST(JsonWriter, RefusesNestingThatReadersRefuse) {
    json::UnknownElement value = json::Array();
    for (int depth = 1; depth < 31; ++depth) {
        json::Array outer;
        outer.Insert(value);
        value = outer;
    }
    EXPECT_EQ(problemOfWriting(value), "");
    json::Array outer;
    outer.Insert(value);
    EXPECT_NE(problemOfWriting(outer), "");
}

TEST(Utf8, IsWhatUnicodeSays) {
    for (char const *good : {"", "plain", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                             "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_TRUE(isUtf8(good)) << good;
    }
    for (char const *bad :
         {"\x80", "\xbf", "\xc0\x80", "\xc1\xbf", "\xc2", "\xc2x", "\xe0\x9f\xbf", "\xe0\xa0", "\xed\xa0\x80",
          "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff", "a\xe4z"}) {
        EXPECT_FALSE(isUtf8(bad)) << bad;
    }
}

TEST(JsonReader, ReadsEveryKindOfValue) {
    json::Object const object = objectOf(
        " { \"text\" : \"a\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00e4\\ud83d\\ude00\" , "
        "\"list\":[1,-2,2.5,1e3,18446744073709551615],"
        "\"yes\":true,\"no\":false,\"nothing\":null,\"inner\":{\"deep\":{}} } ");
    EXPECT_EQ(object["text"].CastTo<json::String>().value(), "a\"\\/\b\f\n\r\t\xc3\xa4\xf0\x9f\x98\x80");
    json::Array const &list = object["list"].CastTo<json::Array>();
    std::vector<double> numbers;
    for (json::UnknownElement const &element : list) {
        numbers.push_back(element.CastTo<json::Number>().value());
    }
    EXPECT_EQ(numbers, (std::vector<double>{1, -2, 2.5, 1000, 18446744073709551616.0}));
    EXPECT_TRUE(object["yes"].CastTo<json::Boolean>().value());
    EXPECT_FALSE(object["no"].CastTo<json::Boolean>().value());
    EXPECT_NO_THROW((void)object["nothing"].CastTo<json::Null>());
    EXPECT_TRUE(object["inner"].CastTo<json::Object>()["deep"].CastTo<json::Object>().empty());
}

TEST(JsonReader, KeepsTheOrderOfMembers) {
    json::Object const object = objectOf("{\"z\":1,\"a\":2,\"m\":3}");
    std::string names;
    for (json::Object::Member const &member : object) {
        names += member.name;
    }
    EXPECT_EQ(names, "zam");
}

TEST(JsonReader, ReadsTextsAndNamesOfAnyLength) {
    std::string const large(300000, 'x');
    json::Object const object = objectOf("{\"" + large + "\":\"" + large + "\\n" + large + "\"}");
    EXPECT_EQ(object[large].CastTo<json::String>().value(), large + "\n" + large);
    json::Object const escaped = objectOf("{\"" + large + "\\n" + large + "\":1}");
    EXPECT_EQ(escaped[large + "\n" + large].CastTo<json::Number>().value(), 1);
}

TEST(JsonReader, RefusesWhatIsNoObject) {
    for (char const *text : {"",
                             " ",
                             "[]",
                             "1",
                             "\"text\"",
                             "null",
                             "true",
                             "nonsense",
                             "{",
                             "{\"a\"}",
                             "{\"a\":}",
                             "{\"a\":1,}",
                             "{} {}",
                             "{}x",
                             "{'a':1}",
                             "{\"a\":01}",
                             "{\"a\":+1}",
                             "{\"a\":.5}",
                             "{\"a\":NaN}",
                             "{\"a\":Infinity}",
                             "{\"a\":\"\\x\"}",
                             "{\"a\":\"\\ud800\"}",
                             "{\"a\":\"\n\"}",
                             "{/**/}",
                             "{\"a\":1}\xef\xbb\xbf"}) {
        EXPECT_NE(problemOfReading(text), "") << text;
    }
}

TEST(JsonReader, RefusesTextsThatAreNotUtf8) {
    EXPECT_NE(problemOfReading("{\"a\":\"\xff\"}"), "");
    EXPECT_NE(problemOfReading("{\"\xc0\x80\":1}"), "");
}

TEST(JsonReader, ReadsTheDoubleThatIsNearestToANumber) {
    // Literals of the compiler beside the same digits in a text.
    EXPECT_EQ(objectOf("{\"v\":18446744073709777777777551614}")["v"].CastTo<json::Number>().value(),
              18446744073709777777777551614.0);
    EXPECT_EQ(
        objectOf("{\"v\":6666666666666666666666666666666666666666619}")["v"].CastTo<json::Number>().value(),
        6666666666666666666666666666666666666666619.0);
    EXPECT_EQ(objectOf("{\"v\":-1.7976931348623157e308}")["v"].CastTo<json::Number>().value(),
              -1.7976931348623157e308);
    EXPECT_EQ(objectOf("{\"v\":2.2250738585072011e-308}")["v"].CastTo<json::Number>().value(),
              2.2250738585072011e-308);
    EXPECT_EQ(objectOf("{\"v\":0.3}")["v"].CastTo<json::Number>().value(), 0.3);
}

TEST(JsonReader, ReadsNumbersTooCloseToZeroAsZero) {
    EXPECT_EQ(objectOf("{\"v\":1e-999}")["v"].CastTo<json::Number>().value(), 0.0);
}

TEST(JsonReader, RefusesNumbersThatNoDoubleHolds) {
    EXPECT_NE(problemOfReading("{\"a\":1e999}"), "");
    EXPECT_NE(problemOfReading("{\"a\":-1e999}"), "");
}

TEST(JsonReader, RefusesANameThatStandsTwiceInAnObject) {
    EXPECT_NE(problemOfReading("{\"a\":1,\"a\":2}"), "");
    EXPECT_EQ(problemOfReading("{\"a\":{\"a\":1}}"), "");
}

TEST(JsonReader, HasABoundOnDepth) {
    EXPECT_EQ(problemOfReading(nested(32)), "");
    EXPECT_NE(problemOfReading(nested(33)), "");
    EXPECT_NE(problemOfReading("{\"v\":" + std::string(500000, '[')), "");
}

TEST(JsonReader, HasABoundOnTheMembersOfAnObject) {
    std::string text = "{\"0\":0";
    for (int number = 1; number < 1024; ++number) {
        text += ",\"" + std::to_string(number) + "\":0";
    }
    EXPECT_EQ(problemOfReading(text + "}"), "");
    EXPECT_NE(problemOfReading(text + ",\"more\":0}"), "");
}

TEST(JsonReader, ReadsAsManyNumbersAsFitIntoAText) {
    std::string text = "{\"v\":[0";
    while (text.size() + 4 <= 1048576) {
        text += ",0";
    }
    text += "]}";
    EXPECT_EQ(objectOf(text)["v"].CastTo<json::Array>().size(), 524284U);
}

TEST(JsonReader, HasABoundOnArraysAndObjects) {
    // The object around them and the list that holds them count too.
    std::string values = "[]";
    for (int number = 1; number < 65534; ++number) {
        values += number % 2 == 0 ? ",[]" : ",{}";
    }
    EXPECT_EQ(problemOfReading("{\"v\":[" + values + "]}"), "");
    for (char const *one_more : {"[]", "{}"}) {
        EXPECT_NE(problemOfReading("{\"v\":[" + values + "," + one_more + "]}")
                      .find("more than 65536 arrays and objects"),
                  std::string::npos);
    }
    EXPECT_EQ(problemOfReading("{\"v\":[" + values + ",0,true,null,\"text\"]}"), "");
}

TEST(JsonReader, HasABoundOnSize) {
    std::string const frame = "{\"v\":\"\"}";
    EXPECT_EQ(problemOfReading("{\"v\":\"" + std::string(1048576 - frame.size(), 'x') + "\"}"), "");
    EXPECT_NE(problemOfReading("{\"v\":\"" + std::string(1048576 - frame.size() + 1, 'x') + "\"}"), "");
}

TEST(JsonReader, SaysWhereTheTextIsBroken) {
    EXPECT_NE(problemOfReading("{\"a\":1,\"b\":}").find("at byte 11"), std::string::npos)
        << problemOfReading("{\"a\":1,\"b\":}");
}
