// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "json/json.h"
#include "json_printing.h"
#include "live_blocks/live_blocks.h"

namespace {

json::Object objectWith(std::string const &name, json::UnknownElement const &element) {
    json::Object object;
    object[name] = element;
    return object;
}

json::Array arrayOf(std::vector<json::UnknownElement> const &elements) {
    json::Array array;
    for (json::UnknownElement const &element : elements) {
        array.Insert(element);
    }
    return array;
}

/// One element of each type.
std::vector<json::UnknownElement> oneOfEach() {
    return {objectWith("name", json::Number(1)),
            arrayOf({json::Number(1)}),
            json::String("text"),
            json::Number(1),
            json::Boolean(true),
            json::Null()};
}

/// Tells the type and, where there is one, the value.
class Describer : public json::ConstVisitor {
  public:
    std::string text;

    void Visit(json::Object const &object) override { text = "object " + std::to_string(object.size()); }
    void Visit(json::Array const &array) override { text = "array " + std::to_string(array.size()); }
    void Visit(json::String const &string) override { text = "string " + string.value(); }
    void Visit(json::Number const &number) override { text = "number " + std::to_string(number.value()); }
    void Visit(json::Boolean const &flag) override { text = flag.value() ? "boolean true" : "boolean false"; }
    void Visit(json::Null const &) override { text = "null"; }
};

std::string describe(json::UnknownElement const &element) {
    Describer describer;
    element.Accept(describer);
    return describer.text;
}

class Changer : public json::Visitor {
  public:
    void Visit(json::Object &object) override { object["added"] = json::Null(); }
    void Visit(json::Array &array) override { array.Insert(json::Null()); }
    void Visit(json::String &string) override { string.value() += "!"; }
    void Visit(json::Number &number) override { number.value() += 1; }
    void Visit(json::Boolean &flag) override { flag.value() = !flag.value(); }
    void Visit(json::Null &) override {}
};

template <typename T>
bool castIsRefused(json::UnknownElement const &element) {
    try {
        (void)element.CastTo<T>();
        return false;
    } catch (json::Exception const &exception) {
        EXPECT_STREQ(exception.what(), "Bad cast");
        return true;
    }
}

std::string castableTypes(json::UnknownElement const &element) {
    std::string types;
    types += castIsRefused<json::Object>(element) ? '-' : 'o';
    types += castIsRefused<json::Array>(element) ? '-' : 'a';
    types += castIsRefused<json::String>(element) ? '-' : 's';
    types += castIsRefused<json::Number>(element) ? '-' : 'n';
    types += castIsRefused<json::Boolean>(element) ? '-' : 'b';
    types += castIsRefused<json::Null>(element) ? '-' : '0';
    return types;
}

}  // namespace

TEST(JsonException, IsARuntimeErrorWithItsText) {
    static_assert(std::is_base_of_v<std::runtime_error, json::Exception>);
    EXPECT_STREQ(json::Exception("some text").what(), "some text");
}

TEST(JsonValues, HaveTheirDefaults) {
    EXPECT_EQ(json::String().value(), "");
    EXPECT_EQ(json::Number().value(), 0.0);
    EXPECT_FALSE(json::Boolean().value());
    EXPECT_TRUE(json::Array().empty());
    EXPECT_TRUE(json::Object().empty());
}

TEST(JsonElement, IsNullUntilSomethingIsAssigned) {
    json::UnknownElement element;
    EXPECT_EQ(describe(element), "null");
    element = json::Number(2);
    EXPECT_EQ(describe(element), "number 2.000000");
}

TEST(JsonElement, IsMadeFromEveryValueTypeImplicitly) {
    static_assert(std::is_convertible_v<json::Object, json::UnknownElement>);
    static_assert(std::is_convertible_v<json::Array const &, json::UnknownElement>);
    static_assert(std::is_convertible_v<json::String, json::UnknownElement>);
    static_assert(std::is_convertible_v<json::Number, json::UnknownElement>);
    static_assert(std::is_convertible_v<json::Boolean, json::UnknownElement>);
    static_assert(std::is_convertible_v<json::Null, json::UnknownElement>);
    std::vector<std::string> described;
    for (json::UnknownElement const &element : oneOfEach()) {
        described.push_back(describe(element));
    }
    EXPECT_EQ(described, (std::vector<std::string>{"object 1", "array 1", "string text", "number 1.000000",
                                                   "boolean true", "null"}));
}

TEST(JsonElement, CastsToItsOwnTypeOnly) {
    std::vector<std::string> castable;
    for (json::UnknownElement const &element : oneOfEach()) {
        castable.push_back(castableTypes(element));
    }
    EXPECT_EQ(castable,
              (std::vector<std::string>{"o-----", "-a----", "--s---", "---n--", "----b-", "-----0"}));
}

TEST(JsonElement, ConvertsToAnyTypeAndKeepsItsOwnValue) {
    for (json::UnknownElement const &original : oneOfEach()) {
        json::UnknownElement text = original;
        json::UnknownElement number = original;
        json::UnknownElement flag = original;
        json::UnknownElement array = original;
        json::UnknownElement object = original;
        json::UnknownElement null = original;
        std::string const type = castableTypes(original);
        EXPECT_EQ(text.ConvertTo<json::String>().value(), type == "--s---" ? "text" : "");
        EXPECT_EQ(number.ConvertTo<json::Number>().value(), type == "---n--" ? 1.0 : 0.0);
        EXPECT_EQ(flag.ConvertTo<json::Boolean>().value(), type == "----b-");
        EXPECT_EQ(array.ConvertTo<json::Array>().size(), type == "-a----" ? 1U : 0U);
        EXPECT_EQ(object.ConvertTo<json::Object>().size(), type == "o-----" ? 1U : 0U);
        (void)null.ConvertTo<json::Null>();
        // What was converted is of the new type from then on.
        EXPECT_EQ(castableTypes(text) + castableTypes(number) + castableTypes(flag), "--s------n------b-");
        EXPECT_EQ(castableTypes(array) + castableTypes(object) + castableTypes(null), "-a----o----------0");
    }
}

TEST(JsonElement, ConvertedValueIsTheElementsOwn) {
    json::UnknownElement element;
    element.ConvertTo<json::String>().value() = "written";
    EXPECT_EQ(describe(element), "string written");
}

TEST(JsonElement, CopiesDeeply) {
    json::UnknownElement const inner = arrayOf({json::String("a"), objectWith("deep", json::String("b"))});
    json::UnknownElement original = objectWith("list", inner);
    json::UnknownElement const copy = original;
    json::UnknownElement assigned;
    assigned = original;

    json::Array &list = original.ConvertTo<json::Object>()["list"].ConvertTo<json::Array>();
    list.begin()->ConvertTo<json::String>().value() = "changed";
    list.Insert(json::Null());
    EXPECT_EQ(copy, json::UnknownElement(objectWith("list", inner)));
    EXPECT_EQ(assigned, copy);
    EXPECT_NE(original, copy);
}

TEST(JsonElement, SurvivesAssignmentToItself) {
    json::UnknownElement element = arrayOf({json::String("a"), json::Number(2)});
    json::UnknownElement const before = element;
    json::UnknownElement &same = element;
    element = same;
    EXPECT_EQ(element, before);
    element = std::move(same);
    EXPECT_EQ(element, before);
}

TEST(JsonElement, MayBeAssignedAPartOfItself) {
    json::UnknownElement element = arrayOf({json::String("first"), arrayOf({json::String("inner")})});
    json::UnknownElement const &part = *(element.CastTo<json::Array>().begin() + 1);
    element = part;
    EXPECT_EQ(element, json::UnknownElement(arrayOf({json::String("inner")})));

    json::UnknownElement object = objectWith("a", objectWith("b", json::String("inner")));
    object = object.ConvertTo<json::Object>()["a"].ConvertTo<json::Object>()["b"];
    EXPECT_EQ(describe(object), "string inner");
}

TEST(JsonElement, MayTakeOverAPartOfItself) {
    bool as_expected = false;
    live_blocks::Recording recording;
    {
        json::UnknownElement element = arrayOf({json::String("first"), arrayOf({json::String("inner")})});
        element = std::move(*(element.ConvertTo<json::Array>().begin() + 1));
        as_expected = element == json::UnknownElement(arrayOf({json::String("inner")}));
    }
    // An element that came to hold itself would never be freed.
    EXPECT_TRUE(recording.end().empty());
    EXPECT_TRUE(as_expected);
}

TEST(JsonElement, HoldsItsWholeInAPartOfItself) {
    json::UnknownElement element = arrayOf({json::String("first")});
    element.ConvertTo<json::Array>().Insert(element);
    EXPECT_EQ(element,
              json::UnknownElement(arrayOf({json::String("first"), arrayOf({json::String("first")})})));
}

TEST(JsonElement, LeavesAValueBehindWhenItIsTakenOver) {
    json::UnknownElement source = json::String("taken");
    json::UnknownElement target;
    target = std::move(source);
    EXPECT_EQ(describe(target), "string taken");
    // Elements have no empty state: what was taken over can be read, copied and written.
    // NOLINTNEXTLINE(bugprone-use-after-move)
    EXPECT_FALSE(describe(source).empty());
    json::UnknownElement const copy = source;
    EXPECT_EQ(copy, source);
    source = json::Number(1);
    EXPECT_EQ(describe(source), "number 1.000000");
}

TEST(JsonElement, IsEqualByTypeAndValue) {
    std::vector<json::UnknownElement> const elements = oneOfEach();
    for (std::size_t left = 0; left < elements.size(); ++left) {
        for (std::size_t right = 0; right < elements.size(); ++right) {
            EXPECT_EQ(elements[left] == elements[right], left == right) << left << " " << right;
            EXPECT_EQ(elements[left] != elements[right], left != right) << left << " " << right;
        }
    }
    EXPECT_NE(json::UnknownElement(json::String("a")), json::UnknownElement(json::String("b")));
    EXPECT_NE(json::UnknownElement(json::Number(1)), json::UnknownElement(json::Number(2)));
    EXPECT_NE(json::UnknownElement(json::Number(1)), json::UnknownElement(json::Boolean(true)));
    EXPECT_NE(json::UnknownElement(json::Boolean(false)), json::UnknownElement(json::Boolean(true)));
    EXPECT_NE(json::UnknownElement(arrayOf({json::Null()})), json::UnknownElement(json::Array()));
    EXPECT_NE(json::UnknownElement(json::String("1")), json::UnknownElement(json::Number(1)));
    EXPECT_EQ(json::UnknownElement(json::Null()), json::UnknownElement());
}

TEST(JsonElement, ShowsItsValueToAVisitorThatMayChangeIt) {
    std::vector<json::UnknownElement> elements = oneOfEach();
    std::vector<std::string> described;
    for (json::UnknownElement &element : elements) {
        Changer changer;
        element.Accept(changer);
        described.push_back(describe(element));
    }
    EXPECT_EQ(described, (std::vector<std::string>{"object 2", "array 2", "string text!", "number 2.000000",
                                                   "boolean false", "null"}));
}

TEST(JsonString, HoldsAnyBytes) {
    std::string const bytes("a\0b\xFF\xC3", 5);
    json::UnknownElement const element = json::String(bytes);
    EXPECT_EQ(element.CastTo<json::String>().value(), bytes);
    EXPECT_EQ(element.CastTo<json::String>().value().size(), 5U);
}
