// SPDX-License-Identifier: Apache-2.0
// Memory that runs out at every place of a call in turn, and allocations that a call does not make.
#include <new>

#include "cpp_layer/support/engine_test.h"
#include "cpp_layer/support/matched.h"
#include "cpp_layer/support/operations.h"
#include "live_blocks/live_blocks.h"
#include "typed_calls/operation.h"
#include "typed_calls/operation_names.h"

namespace cpp_layer {
namespace {

/// Far more allocations than any call makes.
constexpr std::size_t limit = 5000;

class MemoryRunsOut : public EngineTest, public ::testing::WithParamInterface<char const *> {
  protected:
    void SetUp() override {
        if (!live_blocks::canFail()) {
            GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
        }
        EngineTest::SetUp();
    }
};

#define NAME(name) , #name
INSTANTIATE_TEST_SUITE_P(, MemoryRunsOut, ::testing::Values("get_actions" OPERATION_NAMES(NAME)),
                         [](auto const &tested) {
                             return std::string(tested.param) + "_" + std::to_string(tested.index);
                         });
#undef NAME

TEST_P(MemoryRunsOut, OfACallEndsInAStatus) {
    Expectation const expected = matched(expectation(GetParam()));
    Operation const &operation = operations().at(GetParam());
    Values const inputs = samples(expected.inputs);
    korvo::ActionEngine const engine = open();
    bool failed = true;
    std::size_t rounds = 0;
    for (std::size_t nth = 1; failed && nth < limit; ++nth, ++rounds) {
        fake_platform::script();
        fake_platform::respond(responseOf(expected));
        Outcome outcome;
        bool is_ours = false;
        failed = live_blocks::failNth(nth, [&] {
            try {
                outcome = operation.call(engine, inputs, patience);
            } catch (std::bad_alloc const &) {
                is_ours = true;  // the test's own values
            }
        });
        if (!failed) {
            EXPECT_EQ(outcome.values, samples(expected.results));
        } else if (!is_ours && outcome.status == KORVO_CORE_STATUS_NO_ERROR) {
            ADD_FAILURE() << "allocation " << nth << " failed unnoticed";
        }
    }
    EXPECT_FALSE(failed);
    EXPECT_GT(rounds, 1U) << "no allocation was made to fail";
}

TEST_P(MemoryRunsOut, OfAnAsynchronousCallThrowsOrEndsInAStatus) {
    Expectation const expected = matched(expectation(GetParam()));
    Operation const &operation = operations().at(GetParam());
    Values const inputs = samples(expected.inputs);
    korvo::ActionEngine const engine = open();
    // Threads and a session, which are made once.
    settle(engine);
    bool failed = true;
    for (std::size_t nth = 1; failed && nth < limit; ++nth) {
        std::function<Outcome()> wait;
        failed = live_blocks::failNth(nth, [&] {
            try {
                wait = operation.future(engine, inputs, patience);
            } catch (std::bad_alloc const &) {
            }
        });
        if (!failed) {
            fake_platform::deliverResponse("camera-1", lastRequest(), responseOf(expected));
            EXPECT_EQ(wait().values, samples(expected.results));
        }
    }
    EXPECT_FALSE(failed);
}

class Allocations : public EngineTest {};

TEST_F(Allocations, OfASynchronousCallWithScalarsAreThoseOfThePlainCall) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations are not counted under this sanitizer";
    }
    korvo::ActionEngine const engine = open();
    void *handle = nullptr;
    ASSERT_EQ(korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, 0, "plain"),
              KORVO_CORE_STATUS_NO_ERROR);
    json::Object const response = responseOf(expectation("get_action_type"));
    std::size_t counted[2] = {};
    for (int round = 0; round < 2; ++round) {
        // The second round finds everything made that is made once.
        fake_platform::script();
        fake_platform::respond(response);
        {
            live_blocks::Recording recording;
            unsigned int type = 0;
            (void)korvo_api_action_engine_get_action_type_send_with_timeout(handle, "camera-1", 5000, 7,
                                                                            &type);
            counted[0] = recording.allocations();
            for (live_blocks::Block const &block : recording.end()) {
                (void)block;  // the recordings of the fake
            }
        }
        fake_platform::script();
        fake_platform::respond(response);
        {
            live_blocks::Recording recording;
            auto const result = engine.get_action_type(korvo::ActionId{7});
            counted[1] = recording.allocations();
            EXPECT_TRUE(result);
        }
    }
    EXPECT_GT(counted[0], 0U);
    EXPECT_EQ(counted[1], counted[0]);
    (void)korvo_api_action_engine_initiator_deinit(handle);
}

}  // namespace
}  // namespace cpp_layer
