// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "korvo_core.h"

TEST(StatusText, DiffersForEachOfTheElevenStatuses) {
    std::set<std::string> texts;
    for (unsigned int value = 0; value <= 10; ++value) {
        char const *const text = korvo_core_status_to_string(static_cast<korvo_core_status>(value));
        ASSERT_NE(text, nullptr) << value;
        EXPECT_FALSE(std::string(text).empty()) << value;
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 11U);
}

TEST(StatusText, ExistsForStatusesThatNobodyHasNamed) {
    for (unsigned int value : {11U, 77U, 4294967295U}) {
        char const *const text = korvo_core_status_to_string(static_cast<korvo_core_status>(value));
        ASSERT_NE(text, nullptr) << value;
        EXPECT_FALSE(std::string(text).empty()) << value;
    }
}

TEST(Core, CanBeInitialisedAndDeinitialisedAgainAndAgain) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(korvo_core_init(), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(korvo_core_deinit(), KORVO_CORE_STATUS_NO_ERROR);
    }
}
