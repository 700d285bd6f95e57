// SPDX-License-Identifier: Apache-2.0
#include "json/lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "live_blocks/live_blocks.h"

namespace {

/// What the platform's conversion does at its nth call.
struct Conversion {
    unsigned int fails_at = 0;
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    bool throws = false;
    unsigned int calls = 0;
};
Conversion conversion;

json::Array texts(std::vector<std::string> const &values) {
    json::Array array;
    for (std::string const &value : values) {
        array.Insert(json::String(value));
    }
    return array;
}

json::Array numbers(std::vector<double> const &values) {
    json::Array array;
    for (double const value : values) {
        array.Insert(json::Number(value));
    }
    return array;
}

std::vector<std::string> copyOf(char **list) {
    std::vector<std::string> copy;
    for (; *list != nullptr; ++list) {
        copy.emplace_back(*list);
    }
    return copy;
}

std::vector<unsigned int> copyOf(unsigned int **list) {
    std::vector<unsigned int> copy;
    for (; *list != nullptr; ++list) {
        copy.push_back(**list);
    }
    return copy;
}

/// Runs code, frees what it leaves behind, and gives the sizes in no order.
template <typename Code>
std::vector<std::size_t> leftBy(Code const &code) {
    live_blocks::Recording recording;
    code();
    std::vector<std::size_t> sizes;
    for (live_blocks::Block const &block : recording.end()) {
        sizes.push_back(block.size);
        std::free(block.address);
    }
    return sizes;
}

}  // namespace

korvo_core_status convertJsonToValue(json::UnknownElement const &element, char **text) {
    if (++conversion.calls == conversion.fails_at) {
        if (conversion.throws) {
            throw std::runtime_error("arranged");
        }
        return conversion.status;
    }
    *text = strdup(element.CastTo<json::String>().value().c_str());
    return *text != nullptr ? KORVO_CORE_STATUS_NO_ERROR : KORVO_CORE_STATUS_ALLOC_FAILED;
}

class Lists : public testing::Test {
  protected:
    void SetUp() override { conversion = Conversion(); }
};

TEST_F(Lists, OfTextsAreMadeFromArrays) {
    char **list = nullptr;
    ASSERT_EQ(convertJsonArrayToList<char>(texts({"a", "", "b\xC3\xA9"}), &list), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(copyOf(list), (std::vector<std::string>{"a", "", "b\xC3\xA9"}));
    _korvo_core_free_array(list);
}

TEST_F(Lists, OfNumbersAreMadeFromArraysWithEachNumberCut) {
    unsigned int **list = nullptr;
    ASSERT_EQ(convertJsonArrayToList<unsigned int>(
                  numbers({1, 2.9, -3, 2147483648.0, 4294967295.0, 4294967296.0}), &list),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(copyOf(list), (std::vector<unsigned int>{1, 2, 0, 2147483648U, 4294967295U, 4294967295U}));
    _korvo_core_free_array(list);
}

TEST_F(Lists, OfAnEmptyArrayHoldOnlyTheEnd) {
    char **text_list = nullptr;
    unsigned int **number_list = nullptr;
    ASSERT_EQ(convertJsonArrayToList<char>(json::Array(), &text_list), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(convertJsonArrayToList<unsigned int>(json::Array(), &number_list), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_NE(text_list, nullptr);
    ASSERT_NE(number_list, nullptr);
    EXPECT_EQ(*text_list, nullptr);
    EXPECT_EQ(*number_list, nullptr);
    std::free(text_list);
    std::free(number_list);
}

TEST_F(Lists, ConsistOfOneBlockForTheListAndOneForEachElement) {
    std::vector<std::size_t> sizes = leftBy([] {
        unsigned int **list = nullptr;
        EXPECT_EQ(convertJsonArrayToList<unsigned int>(numbers({1, 2}), &list), KORVO_CORE_STATUS_NO_ERROR);
    });
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{4, 4, 3 * sizeof(void *)}));
}

TEST_F(Lists, AreNotMadeInAVariableThatIsNotNull) {
    char *old_texts[] = {nullptr};
    char **text_list = old_texts;
    unsigned int *old_numbers[] = {nullptr};
    unsigned int **number_list = old_numbers;
    EXPECT_TRUE(leftBy([&] {
                    EXPECT_EQ(convertJsonArrayToList<char>(texts({"a"}), &text_list),
                              KORVO_CORE_STATUS_INVALID_PARAMS);
                    EXPECT_EQ(convertJsonArrayToList<unsigned int>(numbers({1}), &number_list),
                              KORVO_CORE_STATUS_INVALID_PARAMS);
                }).empty());
    EXPECT_EQ(text_list, old_texts);
    EXPECT_EQ(number_list, old_numbers);
    EXPECT_EQ(conversion.calls, 0U);
}

TEST_F(Lists, OfTextsEndAtTheFirstElementThatIsRefused) {
    for (unsigned int place : {1U, 2U, 3U}) {
        for (unsigned int status : {1U, 4U, 10U, 77U}) {
            conversion = Conversion();
            conversion.fails_at = place;
            conversion.status = static_cast<korvo_core_status>(status);
            char **list = nullptr;
            EXPECT_TRUE(
                leftBy([&] {
                    EXPECT_EQ(convertJsonArrayToList<char>(texts({"a", "b", "c"}), &list), conversion.status);
                }).empty());
            EXPECT_EQ(list, nullptr);
            EXPECT_EQ(conversion.calls, place);
        }
    }
}

TEST_F(Lists, OfTextsLeaveNothingBehindWhenThePlatformThrows) {
    for (unsigned int place : {1U, 2U, 3U}) {
        conversion = Conversion();
        conversion.fails_at = place;
        conversion.throws = true;
        char **list = nullptr;
        EXPECT_TRUE(leftBy([&] {
                        EXPECT_THROW((void)convertJsonArrayToList<char>(texts({"a", "b", "c"}), &list),
                                     std::runtime_error);
                    }).empty());
        EXPECT_EQ(list, nullptr);
    }
}

TEST_F(Lists, OfNumbersThrowAtAnElementThatIsNoneAndLeaveTheUnfinishedListBehind) {
    json::Array array = numbers({1});
    array.Insert(json::String("2"));
    array.Insert(json::Number(3));
    unsigned int **list = nullptr;
    std::string message;
    message.reserve(64);
    std::vector<std::size_t> sizes = leftBy([&] {
        try {
            (void)convertJsonArrayToList<unsigned int>(array, &list);
        } catch (json::Exception const &exception) {
            message = exception.what();
        }
    });
    EXPECT_EQ(message, "Bad cast");
    EXPECT_EQ(list, nullptr);
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{4, 4, 4 * sizeof(void *)}));
}

TEST_F(Lists, GiveStatus2AndLeaveNothingBehindWhenMemoryRunsOut) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
    }
    json::Array const two_texts = texts({"a", "b"});
    json::Array const two_numbers = numbers({1, 2});
    // The list and each element are one allocation.
    for (std::size_t nth = 1; nth <= 3; ++nth) {
        char **text_list = nullptr;
        unsigned int **number_list = nullptr;
        korvo_core_status text_status = KORVO_CORE_STATUS_NO_ERROR;
        korvo_core_status number_status = KORVO_CORE_STATUS_NO_ERROR;
        EXPECT_TRUE(leftBy([&] {
                        EXPECT_TRUE(live_blocks::failNth(
                            nth, [&] { text_status = convertJsonArrayToList<char>(two_texts, &text_list); }));
                        EXPECT_TRUE(live_blocks::failNth(nth, [&] {
                            number_status = convertJsonArrayToList<unsigned int>(two_numbers, &number_list);
                        }));
                    }).empty());
        EXPECT_EQ(text_status, KORVO_CORE_STATUS_ALLOC_FAILED) << nth;
        EXPECT_EQ(number_status, KORVO_CORE_STATUS_ALLOC_FAILED) << nth;
        EXPECT_EQ(text_list, nullptr);
        EXPECT_EQ(number_list, nullptr);
    }
    unsigned int **list = nullptr;
    EXPECT_FALSE(
        live_blocks::failNth(4, [&] { (void)convertJsonArrayToList<unsigned int>(two_numbers, &list); }));
    ASSERT_NE(list, nullptr);
    _korvo_core_free_array(list);
}

TEST_F(Lists, AreFreedElementByElement) {
    EXPECT_TRUE(leftBy([] {
                    unsigned int **list = nullptr;
                    EXPECT_EQ(convertJsonArrayToList<unsigned int>(numbers({1, 2, 3}), &list),
                              KORVO_CORE_STATUS_NO_ERROR);
                    _korvo_core_free_array(list);
                }).empty());
    _korvo_core_free_array<char>(nullptr);
    _korvo_core_free_array<unsigned int>(nullptr);
}

TEST_F(Lists, EndWithTheirOwnerOnlyWhenToldTo) {
    EXPECT_TRUE(leftBy([] {
                    korvo::lib::cScopedPointerList<char> owner;
                    EXPECT_EQ(owner.list, nullptr);
                    owner.freeList();
                    EXPECT_EQ(convertJsonArrayToList<char>(texts({"a", "b"}), &owner.list),
                              KORVO_CORE_STATUS_NO_ERROR);
                    owner.freeList();
                    // The pointer is not reset.
                    EXPECT_NE(owner.list, nullptr);
                }).empty());
    EXPECT_EQ(leftBy([] {
                  korvo::lib::cScopedPointerList<unsigned int> owner;
                  EXPECT_EQ(convertJsonArrayToList<unsigned int>(numbers({1}), &owner.list),
                            KORVO_CORE_STATUS_NO_ERROR);
              }).size(),
              2U);
}

TEST_F(Lists, OfCallersBecomeArrays) {
    char first[] = "a";
    char second[] = "";
    char *text_list[] = {first, second, nullptr, first};
    EXPECT_EQ(json::ToArray(text_list), texts({"a", ""}));
    EXPECT_EQ(json::ToArray(text_list + 2), json::Array());

    unsigned int largest = 4294967295U;
    unsigned int upper_half = 2147483648U;
    unsigned int zero = 0;
    unsigned int *number_list[] = {&largest, &upper_half, &zero, nullptr, &zero};
    EXPECT_EQ(json::ToArray(number_list), numbers({4294967295.0, 2147483648.0, 0}));
    EXPECT_EQ(json::ToArray(number_list + 3), json::Array());
}
