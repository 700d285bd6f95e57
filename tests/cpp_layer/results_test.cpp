// SPDX-License-Identifier: Apache-2.0
// What a result gives lives as long as the caller uses it.
#include <type_traits>
#include <utility>

#include "cpp_layer/support/engine_test.h"

namespace cpp_layer {
namespace {

class Results : public EngineTest {};

TEST_F(Results, CanBeWalkedThroughInTheLoopThatCalls) {
    korvo::ActionEngine const engine = open();
    fake_platform::respond(responseOf(expectation("get_actions")));
    std::size_t entries = 0;
    for (korvo::ActionEntry const &entry : engine.get_actions().value()) {
        EXPECT_NE(korvo::number(entry.action_id), 0U);
        ++entries;
    }
    EXPECT_GT(entries, 0U);
    // A reference would point into the result, which is gone before the first entry is looked at.
    EXPECT_FALSE(std::is_reference_v<decltype(std::declval<Actions>().value())>);
}

}  // namespace
}  // namespace cpp_layer
