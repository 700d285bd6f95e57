// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "json/json.h"
#include "json_printing.h"

namespace {

std::string names(json::Object const &object) {
    std::string joined;
    for (json::Object::Member const &member : object) {
        joined += member.name + " ";
    }
    return joined;
}

json::Object example() {
    json::Object object;
    object["command"] = json::String("Get");
    object["zebra"] = json::Number(1);
    object["ant"] = json::Boolean(true);
    return object;
}

template <typename Function>
std::string messageOf(Function const &function) {
    try {
        function();
    } catch (json::Exception const &exception) {
        return exception.what();
    }
    return "no exception";
}

}  // namespace

TEST(JsonObject, KeepsMembersInTheOrderOfInsertion) {
    json::Object const object = example();
    EXPECT_EQ(names(object), "command zebra ant ");
    EXPECT_EQ(object.size(), 3U);
    EXPECT_FALSE(object.empty());
}

TEST(JsonObject, ReadsMembersByName) {
    json::Object const object = example();
    EXPECT_EQ(object["zebra"].CastTo<json::Number>().value(), 1.0);
    EXPECT_TRUE(object["ant"].CastTo<json::Boolean>().value());
}

TEST(JsonObject, RefusesToReadAMemberThatIsNotThere) {
    json::Object const object = example();
    EXPECT_EQ(messageOf([&] { (void)object["status"]; }), "Object member not found: status");
    EXPECT_EQ(messageOf([&] { (void)object[""]; }), "Object member not found: ");
    EXPECT_EQ(messageOf([&] { (void)json::Object(object)["status"]; }), "no exception");
    EXPECT_EQ(object.size(), 3U);
}

TEST(JsonObject, ComparesNamesByteForByte) {
    json::Object object;
    std::string const with_zero("a\0b", 3);
    for (std::string const &name :
         {std::string("a"), std::string("A"), std::string("a "), with_zero, std::string()}) {
        object[name] = json::String(name);
    }
    EXPECT_EQ(object.size(), 5U);
    json::Object const &read_only = object;
    EXPECT_EQ(read_only[with_zero].CastTo<json::String>().value(), with_zero);
    EXPECT_EQ(read_only["a"].CastTo<json::String>().value(), "a");
    EXPECT_EQ(messageOf([&] { (void)read_only["aa"]; }), "Object member not found: aa");
}

TEST(JsonObject, AppendsNullForAMemberThatIsNotThere) {
    json::Object object = example();
    (void)object["added"];
    (void)object["added"];
    EXPECT_EQ(names(object), "command zebra ant added ");
    EXPECT_EQ(object["added"], json::UnknownElement(json::Null()));
}

TEST(JsonObject, ReplacesAValueInItsPlace) {
    json::Object object = example();
    object["command"] = json::Number(5);
    EXPECT_EQ(names(object), "command zebra ant ");
    EXPECT_EQ(object["command"], json::UnknownElement(json::Number(5)));
}

TEST(JsonObject, InsertsAtTheEndAndReturnsThePlace) {
    json::Object object = example();
    json::Object::iterator const place = object.Insert(json::Object::Member("new", json::String("value")));
    EXPECT_EQ(place->name, "new");
    EXPECT_EQ(place->element, json::UnknownElement(json::String("value")));
    EXPECT_EQ(names(object), "command zebra ant new ");
    EXPECT_EQ(object.Emplace("last", json::Number(3)), json::UnknownElement(json::Number(3)));
    EXPECT_EQ(names(object), "command zebra ant new last ");
}

TEST(JsonObject, RefusesToInsertAMemberTwice) {
    json::Object object = example();
    EXPECT_EQ(messageOf([&] { object.Insert(json::Object::Member("zebra", json::Null())); }),
              "Object member already exists: zebra");
    EXPECT_EQ(messageOf([&] { (void)object.Emplace("ant", json::Null()); }),
              "Object member already exists: ant");
    EXPECT_EQ(object, example());
}

TEST(JsonObject, InsertsACopy) {
    json::Object::Member member("name", json::String("before"));
    json::Object object;
    object.Insert(member);
    member.element = json::String("after");
    EXPECT_EQ(object["name"], json::UnknownElement(json::String("before")));
}

TEST(JsonObject, KeepsElementsAtTheirAddressesWhileMembersAreAdded) {
    json::Object object;
    json::UnknownElement &first = object["first"];
    first = json::String("value");
    json::UnknownElement const *const address = &first;
    for (int place = 0; place < 1000; ++place) {
        (void)object["member " + std::to_string(place)];
        if (place % 100 == 0) {
            (void)object.Emplace("emplaced " + std::to_string(place), json::Null());
        }
    }
    EXPECT_EQ(&object["first"], address);
    EXPECT_EQ(first, json::UnknownElement(json::String("value")));
}

TEST(JsonObject, FindsMembersWithoutAddingThem) {
    json::Object object = example();
    json::Object const &read_only = object;
    ASSERT_NE(object.Find("zebra"), object.end());
    EXPECT_EQ(read_only.Find("zebra")->name, "zebra");
    EXPECT_EQ(object.Find("status"), object.end());
    EXPECT_EQ(read_only.Find("status"), read_only.end());
    EXPECT_EQ(object.size(), 3U);
}

TEST(JsonObject, CopiesDeeply) {
    json::Object original;
    original["inner"] = example();
    json::Object const copy = original;
    original["inner"].ConvertTo<json::Object>()["zebra"] = json::Number(99);
    json::Object const &inner = copy["inner"].CastTo<json::Object>();
    EXPECT_EQ(inner["zebra"], json::UnknownElement(json::Number(1)));
    EXPECT_NE(original, copy);
}

TEST(JsonObject, IsEqualToOneWithTheSameMembersInTheSameOrder) {
    EXPECT_EQ(example(), example());
    json::Object other_order;
    other_order["zebra"] = json::Number(1);
    other_order["command"] = json::String("Get");
    other_order["ant"] = json::Boolean(true);
    EXPECT_NE(example(), other_order);
    json::Object more = example();
    (void)more["added"];
    EXPECT_NE(example(), more);
    json::Object other_value = example();
    other_value["zebra"] = json::Number(2);
    EXPECT_NE(example(), other_value);
    EXPECT_NE(*example().begin(), *other_order.begin());
}

TEST(JsonObject, MayBeStoredInAMemberOfItself) {
    json::Object object = example();
    json::UnknownElement &self = object["self"];
    json::Object const before = object;
    self = object;
    json::Object expected = example();
    expected["self"] = before;
    EXPECT_EQ(object, expected);
}
