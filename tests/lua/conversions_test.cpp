// SPDX-License-Identifier: Apache-2.0
// The exported list conversions and references, called as a host calls them.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <vector>

#include "fake_platform/core_calls.h"
#include "host/state.h"
#include "live_blocks/live_blocks.h"
#include "lua/conversions.h"

namespace {

class Conversions : public testing::Test {
  protected:
    void TearDown() override { fake_platform::reset(); }

    /// Evaluates an expression and leaves its value on top of a stack that already holds something.
    int push(std::string const &expression) {
        lua_pushliteral(state_, "below");
        EXPECT_EQ(state_.run("return " + expression), "");
        return lua_gettop(state_);
    }

    /// The elements of the list that a conversion makes; no value stands for NULL.
    template <typename T>
    std::vector<T> list(T **(*convert)(lua_State *, int), void (*release)(T **),
                        std::string const &expression, bool *is_null = nullptr) {
        int const index = push(expression);
        T **const made = convert(state_, index);
        EXPECT_EQ(lua_gettop(state_), index) << expression;
        std::vector<T> elements;
        for (T **element = made; element != nullptr && *element != nullptr; ++element) {
            elements.push_back(**element);
        }
        if (is_null != nullptr) {
            *is_null = made == nullptr;
        } else {
            EXPECT_NE(made, nullptr) << expression;
        }
        if (made != nullptr) {
            release(made);
        }
        return elements;
    }

    std::vector<unsigned int> uints(std::string const &expression) {
        return list(convertTableToUintArray, korvo_core_free_uint_array, expression);
    }
    std::vector<int> ints(std::string const &expression) {
        return list(convertTableToIntArray, korvo_core_free_int_array, expression);
    }

    template <typename T>
    bool isRefused(T **(*convert)(lua_State *, int), void (*release)(T **), std::string const &expression) {
        bool is_null = false;
        (void)list(convert, release, expression, &is_null);
        return is_null;
    }

    /// The value on top, which a conversion pushed, as Lua text.
    std::string shown() {
        lua_setglobal(state_, "value");
        EXPECT_EQ(state_.run("if type(value) ~= 'table' then return tostring(value) end\n"
                             "local parts = {}\n"
                             "for place, element in ipairs(value) do parts[place] = type(element) .. ' ' .. "
                             "tostring(element) end\n"
                             "local count = 0 for _ in pairs(value) do count = count + 1 end\n"
                             "assert(count == #parts)\n"
                             "return '{' .. table.concat(parts, ', ') .. '}'"),
                  "");
        std::string const text = lua_tostring(state_, -1);
        lua_pop(state_, 1);
        return text;
    }

    State state_;
};

TEST_F(Conversions, CountPairsOfEveryKind) {
    EXPECT_EQ(getNumberOfTableEntries(state_, push("{}")), 0);
    EXPECT_EQ(getNumberOfTableEntries(state_, push("{1, 2, 3}")), 3);
    EXPECT_EQ(getNumberOfTableEntries(state_, push("{1, nil, 3, x = 1, [true] = 2, [{}] = 3, [0.5] = 4}")),
              6);
    int const index = push("setmetatable({1}, {__index = {1, 2, 3}, __len = function() return 9 end})");
    EXPECT_EQ(getNumberOfTableEntries(state_, index), 1);
    EXPECT_EQ(lua_gettop(state_), index);
}

TEST_F(Conversions, MakeNoListsOfWhatIsNoTable) {
    for (char const *const expression : {"nil", "5", "'text'", "true", "print", "io.stdout"}) {
        EXPECT_EQ(getNumberOfTableEntries(state_, push(expression)), 0) << expression;
        EXPECT_TRUE(isRefused(convertTableToIntArray, korvo_core_free_int_array, expression)) << expression;
        EXPECT_TRUE(isRefused(convertTableToStrArray, korvo_core_free_string_array, expression))
            << expression;
    }
}

TEST_F(Conversions, MakeAnEmptyListOfAnEmptyTable) {
    EXPECT_EQ(uints("{}"), std::vector<unsigned int>());
    EXPECT_EQ(ints("{}"), std::vector<int>());
    EXPECT_FALSE(isRefused(convertTableToBoolArray, korvo_core_free_bool_array, "{}"));
    EXPECT_FALSE(isRefused(convertTableToDblArray, korvo_core_free_double_array, "{}"));
    EXPECT_FALSE(isRefused(convertTableToStrArray, korvo_core_free_string_array, "{}"));
}

TEST_F(Conversions, TakeFlagsAsFlagsOnly) {
    EXPECT_EQ(list(convertTableToBoolArray, korvo_core_free_bool_array, "{true, false}"),
              (std::vector<unsigned char>{1, 0}));
    EXPECT_TRUE(isRefused(convertTableToBoolArray, korvo_core_free_bool_array, "{1, 0}"));
    EXPECT_TRUE(isRefused(convertTableToBoolArray, korvo_core_free_bool_array, "{true, 'true'}"));
}

TEST_F(Conversions, TakeNumbersAsNumbersOnly) {
    for (char const *const expression : {"{'1'}", "{1, true}", "{{}}", "{1, 2, '3'}"}) {
        EXPECT_TRUE(isRefused(convertTableToUintArray, korvo_core_free_uint_array, expression)) << expression;
        EXPECT_TRUE(isRefused(convertTableToIntArray, korvo_core_free_int_array, expression)) << expression;
        EXPECT_TRUE(isRefused(convertTableToDblArray, korvo_core_free_double_array, expression))
            << expression;
    }
}

TEST_F(Conversions, RefuseHolesAndOtherKeys) {
    for (char const *const expression :
         {"{1, 2, x = 3}", "{1, nil, 3}", "{[2] = 1}", "{[0] = 1}", "{[1.5] = 1}", "{1, [-1] = 2}"}) {
        EXPECT_TRUE(isRefused(convertTableToIntArray, korvo_core_free_int_array, expression)) << expression;
    }
    EXPECT_EQ(ints("{[2] = 8, [1] = 7}"), (std::vector<int>{7, 8}));
}

TEST_F(Conversions, TruncateAndWrapUnsignedNumbersTo32Bits) {
    EXPECT_EQ(uints("{0, 1.9, 3000000000, 4294967295}"),
              (std::vector<unsigned int>{0, 1, 3000000000U, 4294967295U}));
    EXPECT_EQ(uints("{-1, -2.7, -2147483648}"),
              (std::vector<unsigned int>{4294967295U, 4294967294U, 2147483648U}));
    EXPECT_EQ(uints("{2^40, -2^40, 1/0, -1/0, 0/0}"),
              (std::vector<unsigned int>{4294967295U, 2147483648U, 4294967295U, 2147483648U, 0}));
}

TEST_F(Conversions, TruncateAndSaturateSignedNumbers) {
    EXPECT_EQ(ints("{1.9, -2.7}"), (std::vector<int>{1, -2}));
    EXPECT_EQ(ints("{2147483647, -2147483648, 2147483648, -2147483649, 2^40, -2^40, 1/0, -1/0, 0/0}"),
              (std::vector<int>{INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN, 0}));
}

TEST_F(Conversions, KeepDoubles) {
    std::vector<double> const found =
        list(convertTableToDblArray, korvo_core_free_double_array, "{0.1, -2^60, 1/0, 0/0}");
    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found[0], 0.1);
    EXPECT_EQ(found[1], -std::pow(2.0, 60));
    EXPECT_EQ(found[2], HUGE_VAL);
    EXPECT_TRUE(std::isnan(found[3]));
}

TEST_F(Conversions, CopyTextsUpToTheirFirstZeroByte) {
    char **const list = convertTableToStrArray(state_, push("{'a', '', 'x\\0y'}"));
    ASSERT_NE(list, nullptr);
    EXPECT_STREQ(list[0], "a");
    EXPECT_STREQ(list[1], "");
    EXPECT_STREQ(list[2], "x");
    EXPECT_EQ(list[3], nullptr);
    korvo_core_free_string_array(list);
    EXPECT_TRUE(isRefused(convertTableToStrArray, korvo_core_free_string_array, "{'a', 5}"));
    EXPECT_TRUE(isRefused(convertTableToStrArray, korvo_core_free_string_array, "{'a', x = 'b'}"));
}

TEST_F(Conversions, ReadElementsThroughMetamethods) {
    EXPECT_EQ(ints("setmetatable({7, x = 1}, {__index = {0, 8}})"), (std::vector<int>{7, 8}));
    EXPECT_EQ(ints("setmetatable({x = 1, y = 2}, {__index = function(_, key) return key * 10 end})"),
              (std::vector<int>{10, 20}));
}

TEST_F(Conversions, GiveNullWhenTheCoreHasNoMemory) {
    fake_platform::recordCore();
    for (char const *const name : {"bool", "uint", "int", "double", "string"}) {
        fake_platform::answer(std::string("korvo_core_alloc_") + name + "_array", {});
    }
    EXPECT_TRUE(isRefused(convertTableToBoolArray, korvo_core_free_bool_array, "{true}"));
    EXPECT_TRUE(isRefused(convertTableToUintArray, korvo_core_free_uint_array, "{1}"));
    EXPECT_TRUE(isRefused(convertTableToIntArray, korvo_core_free_int_array, "{1}"));
    EXPECT_TRUE(isRefused(convertTableToDblArray, korvo_core_free_double_array, "{}"));
    EXPECT_TRUE(isRefused(convertTableToStrArray, korvo_core_free_string_array, "{'a'}"));
    EXPECT_EQ(fake_platform::coreCalls().size(), 5U);
}

TEST_F(Conversions, GiveNullWhenTheCoreThrows) {
    fake_platform::recordCore();
    fake_platform::answer("korvo_core_alloc_int_array", {{}, {}, fake_platform::Throw::number});
    EXPECT_TRUE(isRefused(convertTableToIntArray, korvo_core_free_int_array, "{1}"));
}

TEST_F(Conversions, GiveNullWhenATextCannotBeCopied) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    int const index = push("{'a', 'b', 'c'}");
    int refused = 0;
    for (std::size_t nth = 1;; ++nth) {
        live_blocks::Recording recording;
        char **list = nullptr;
        bool const failed = live_blocks::failNth(nth, [&] { list = convertTableToStrArray(state_, index); });
        EXPECT_EQ(list == nullptr, failed) << nth;
        refused += failed ? 1 : 0;
        if (list != nullptr) {
            korvo_core_free_string_array(list);
        }
        EXPECT_EQ(recording.end().size(), 0U) << nth;
        if (!failed) {
            break;
        }
    }
    // The list, and three texts.
    EXPECT_EQ(refused, 4);
}

int tableToInts(lua_State *L) {
    int **const list = convertTableToIntArray(L, 1);
    korvo_core_free_int_array(list);
    return 0;
}

TEST_F(Conversions, ReleaseTheListWhenAMetamethodRaisesAnError) {
    live_blocks::Recording recording;
    lua_pushcfunction(state_, tableToInts);
    {
        live_blocks::Unnoticed const unnoticed;
        EXPECT_EQ(
            state_.run(
                "return setmetatable({1, x = 2, y = 3}, {__index = function() error('broken', 0) end})"),
            "");
    }
    EXPECT_NE(lua_pcall(state_, 1, 0, 0), 0);
    EXPECT_STREQ(lua_tostring(state_, -1), "broken");
    EXPECT_EQ(recording.end().size(), 0U);
}

// ---- Lists to tables ----

TEST_F(Conversions, PushListsAndReleaseThem) {
    fake_platform::recordCore();
    int **const list = korvo_core_alloc_int_array(3);
    *list[0] = -1;
    *list[1] = 0;
    *list[2] = INT_MAX;
    int const height = lua_gettop(state_);
    convertIntArrayToTable(state_, list);
    EXPECT_EQ(lua_gettop(state_), height + 1);
    EXPECT_EQ(shown(), "{number -1, number 0, number 2147483647}");
    std::vector<fake_platform::CoreCall> const calls = fake_platform::coreCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[1].function, "korvo_core_free_int_array");
    EXPECT_EQ(calls[1].arguments.at(0), fake_platform::Value::ofPointer(list));
}

TEST_F(Conversions, PushUnsignedNumbersAsSignedOnes) {
    unsigned int **const list = korvo_core_alloc_uint_array(5);
    unsigned int const values[] = {0, 2147483647U, 2147483648U, 3000000000U, 4294967295U};
    for (int place = 0; place < 5; ++place) {
        *list[place] = values[place];
    }
    convertUintArrayToTable(state_, list);
    EXPECT_EQ(shown(), "{number 0, number 2147483647, number -2147483648, number -1294967296, number -1}");
}

TEST_F(Conversions, PushFlagsDoublesAndTexts) {
    unsigned char **const flags = korvo_core_alloc_bool_array(3);
    *flags[0] = 1;
    *flags[2] = 255;
    convertBoolArrayToTable(state_, flags);
    EXPECT_EQ(shown(), "{boolean true, boolean false, boolean true}");
    double **const doubles = korvo_core_alloc_double_array(2);
    *doubles[0] = 0.5;
    *doubles[1] = -3;
    convertDblArrayToTable(state_, doubles);
    EXPECT_EQ(shown(), "{number 0.5, number -3}");
    char **const texts = korvo_core_alloc_string_array(2);
    texts[0] = strdup("a");
    texts[1] = strdup("");
    convertStrArrayToTable(state_, texts);
    EXPECT_EQ(shown(), "{string a, string }");
}

TEST_F(Conversions, PushEmptyListsAsEmptyTablesAndNullAsNil) {
    convertUintArrayToTable(state_, korvo_core_alloc_uint_array(0));
    EXPECT_EQ(shown(), "{}");
    // Slots without a text end a list.
    convertStrArrayToTable(state_, korvo_core_alloc_string_array(3));
    EXPECT_EQ(shown(), "{}");
    fake_platform::recordCore();
    int const height = lua_gettop(state_);
    convertBoolArrayToTable(state_, nullptr);
    convertUintArrayToTable(state_, nullptr);
    convertIntArrayToTable(state_, nullptr);
    convertDblArrayToTable(state_, nullptr);
    convertStrArrayToTable(state_, nullptr);
    EXPECT_EQ(lua_gettop(state_), height + 5);
    for (int place = 1; place <= 5; ++place) {
        EXPECT_TRUE(lua_isnil(state_, height + place));
    }
    EXPECT_EQ(fake_platform::coreCalls().size(), 0U);
}

// ---- References ----

TEST_F(Conversions, ReferencesKeepAValueUntilTheyAreCleared) {
    EXPECT_EQ(state_.run("weak = setmetatable({}, {__mode = 'v'}) weak.value = {} return weak.value"), "");
    SWIGLUA_REF reference = {};
    swiglua_ref_set(&reference, state_, -1);
    EXPECT_EQ(reference.L, state_.get());
    lua_settop(state_, 0);
    EXPECT_EQ(state_.run("collectgarbage() collectgarbage() assert(weak.value)"), "");
    swiglua_ref_get(&reference);
    EXPECT_EQ(lua_gettop(state_), 1);
    lua_getglobal(state_, "weak");
    lua_getfield(state_, -1, "value");
    EXPECT_TRUE(lua_rawequal(state_, 1, -1));
    lua_settop(state_, 0);

    swiglua_ref_clear(&reference);
    EXPECT_EQ(reference.L, nullptr);
    EXPECT_EQ(reference.ref, 0);
    EXPECT_EQ(state_.run("collectgarbage() collectgarbage() assert(weak.value == nil)"), "");
    swiglua_ref_clear(&reference);
    swiglua_ref_get(&reference);
    EXPECT_EQ(lua_gettop(state_), 0);
}

TEST_F(Conversions, ReferencesToNilReleaseNothing) {
    SWIGLUA_REF reference = {};
    lua_pushnil(state_);
    swiglua_ref_set(&reference, state_, 1);
    EXPECT_EQ(reference.ref, LUA_REFNIL);
    EXPECT_EQ(lua_gettop(state_), 1);
    swiglua_ref_get(&reference);
    EXPECT_TRUE(lua_isnil(state_, 2));
    swiglua_ref_clear(&reference);

    // The next reference gets a place of its own: clearing one of nil has given none back.
    lua_pushliteral(state_, "value");
    SWIGLUA_REF one = {};
    SWIGLUA_REF other = {};
    swiglua_ref_set(&one, state_, -1);
    swiglua_ref_set(&other, state_, -1);
    EXPECT_NE(one.ref, other.ref);
    EXPECT_GT(one.ref, 0);
    EXPECT_GT(other.ref, 0);
    swiglua_ref_clear(&one);
    swiglua_ref_clear(&other);
}

TEST_F(Conversions, ReferencesThatReferToNothingReleaseNothing) {
    SWIGLUA_REF unset = {state_.get(), LUA_NOREF};
    swiglua_ref_clear(&unset);
    EXPECT_EQ(unset.L, nullptr);
    EXPECT_EQ(unset.ref, 0);
}

}  // namespace
