// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "korvo_core.h"

namespace {

template <typename T>
void expectElementsToWrite(T **list, unsigned int count) {
    ASSERT_NE(list, nullptr);
    for (unsigned int index = 0; index < count; ++index) {
        ASSERT_NE(list[index], nullptr);
        *list[index] = static_cast<T>(index);
    }
    for (unsigned int index = 0; index < count; ++index) {
        EXPECT_EQ(*list[index], static_cast<T>(index));
    }
    EXPECT_EQ(list[count], nullptr);
}

}  // namespace

TEST(Arrays, HaveAsManyElementsAsAskedForAndAnEnd) {
    unsigned char **const flags = korvo_core_alloc_bool_array(3);
    unsigned int **const unsigned_numbers = korvo_core_alloc_uint_array(3);
    int **const numbers = korvo_core_alloc_int_array(3);
    double **const doubles = korvo_core_alloc_double_array(3);
    expectElementsToWrite(flags, 3);
    expectElementsToWrite(unsigned_numbers, 3);
    expectElementsToWrite(numbers, 3);
    expectElementsToWrite(doubles, 3);
    korvo_core_free_bool_array(flags);
    korvo_core_free_uint_array(unsigned_numbers);
    korvo_core_free_int_array(numbers);
    korvo_core_free_double_array(doubles);
}

TEST(Arrays, OfTextsHaveRoomForTextsAndAnEnd) {
    char **const texts = korvo_core_alloc_string_array(2);
    ASSERT_NE(texts, nullptr);
    EXPECT_EQ(texts[0], nullptr);
    EXPECT_EQ(texts[1], nullptr);
    EXPECT_EQ(texts[2], nullptr);
    texts[0] = strdup("first");
    texts[1] = strdup("second");
    korvo_core_free_string_array(texts);
}

TEST(Arrays, MayBeEmpty) {
    unsigned int **const numbers = korvo_core_alloc_uint_array(0);
    ASSERT_NE(numbers, nullptr);
    EXPECT_EQ(numbers[0], nullptr);
    korvo_core_free_uint_array(numbers);
}

TEST(Arrays, AreFreedWhoeverMadeThem) {
    auto **const numbers = static_cast<unsigned int **>(std::calloc(2, sizeof(unsigned int *)));
    ASSERT_NE(numbers, nullptr);
    numbers[0] = static_cast<unsigned int *>(std::malloc(sizeof(unsigned int)));
    korvo_core_free_uint_array(numbers);

    unsigned int **const made = korvo_core_alloc_uint_array(1);
    ASSERT_NE(made, nullptr);
    std::free(made[0]);
    std::free(made);
}

TEST(Arrays, ThatAreNullAreFreedToo) {
    korvo_core_free_bool_array(nullptr);
    korvo_core_free_uint_array(nullptr);
    korvo_core_free_int_array(nullptr);
    korvo_core_free_double_array(nullptr);
    korvo_core_free_string_array(nullptr);
}
