// SPDX-License-Identifier: Apache-2.0
// In C++ every function promises not to throw, and no callback type asks that of a caller's function.

#include <gtest/gtest.h>

#include <type_traits>

#include "korvo_api_action_engine.h"
#include "typed_calls/operation_names.h"

namespace {

template <typename Function>
struct NeverThrows : std::false_type {};

template <typename Result, typename... Parameters>
struct NeverThrows<Result (*)(Parameters...) noexcept> : std::true_type {};

#define NEVER_THROWS(name) NeverThrows<decltype(&korvo_api_action_engine_##name)>::value
#define CALLBACK_MAY_THROW(name) !NeverThrows<korvo_api_action_engine_##name##_callback_func_ptr>::value

TEST(NoThrow, HoldsForEveryFunctionOfTheLifeOfAHandleAndOfEvents) {
    EXPECT_TRUE(NEVER_THROWS(initiator_init));
    EXPECT_TRUE(NEVER_THROWS(initiator_deinit));
    EXPECT_TRUE(NEVER_THROWS(get_initiator_version));
    EXPECT_TRUE(NEVER_THROWS(free_uuid));
    EXPECT_TRUE(NEVER_THROWS(register_default_callbacks));
    EXPECT_TRUE(NEVER_THROWS(unregister_default_callbacks));
    EXPECT_TRUE(NEVER_THROWS(action_completed_register_event_handler));
    EXPECT_TRUE(NEVER_THROWS(action_completed_unregister_event_handler));
    EXPECT_TRUE(NEVER_THROWS(action_completed_unregister_event_handler_with_context));
    EXPECT_TRUE(CALLBACK_MAY_THROW(action_completed_event));
}

TEST(NoThrow, HoldsForEveryFormOfTheVersionQuery) {
    EXPECT_TRUE(NEVER_THROWS(__get_target_version___send));
    EXPECT_TRUE(NEVER_THROWS(__get_target_version___non_blocking_send));
    EXPECT_TRUE(NEVER_THROWS(__get_target_version___receive));
    EXPECT_TRUE(NEVER_THROWS(__get_target_version___send_async));
    EXPECT_TRUE(NEVER_THROWS(__get_target_version___cancel_async));
    EXPECT_TRUE(CALLBACK_MAY_THROW(__get_target_version___method));
}

TEST(NoThrow, HoldsForTheSevenFormsOfEveryOperation) {
#define OPERATION(name)                                     \
    EXPECT_TRUE(NEVER_THROWS(name##_send));                 \
    EXPECT_TRUE(NEVER_THROWS(name##_send_with_timeout));    \
    EXPECT_TRUE(NEVER_THROWS(name##_non_blocking_send));    \
    EXPECT_TRUE(NEVER_THROWS(name##_receive));              \
    EXPECT_TRUE(NEVER_THROWS(name##_receive_with_timeout)); \
    EXPECT_TRUE(NEVER_THROWS(name##_send_async));           \
    EXPECT_TRUE(NEVER_THROWS(name##_cancel_async));         \
    EXPECT_TRUE(CALLBACK_MAY_THROW(name##_method));
    OPERATION_NAMES(OPERATION)
#undef OPERATION
}

TEST(Enumerations, HaveTheValuesThatTravel) {
    EXPECT_EQ(ActionType{kSendEmailAction}, 0U);
    EXPECT_EQ(ActionType{kFtpUploadAction}, 1U);
    EXPECT_EQ(ActionType{kSaveSnapshotAction}, 2U);
    EXPECT_EQ(ActionType{kPtzPatternAction}, 3U);
    EXPECT_EQ(ActionType{kPtzPresetAction}, 4U);
    EXPECT_EQ(ActionType{kPtzTourAction}, 5U);
    EXPECT_EQ(ActionType{kPtzScanAction}, 6U);
    EXPECT_EQ(ActionType{kWiperAction}, 7U);
    EXPECT_EQ(ActionType{kWasherAction}, 8U);
    EXPECT_EQ(ActionType{kRelayAction}, 9U);

    EXPECT_EQ(TriggerType{kOnvifEventTrigger}, 0U);
    EXPECT_EQ(TriggerType{kReoccurringTimerTrigger}, 1U);
    EXPECT_EQ(TriggerType{kStableOnvifEventTrigger}, 2U);

    EXPECT_EQ(Weekday{kSunday}, 1U);
    EXPECT_EQ(Weekday{kMonday}, 2U);
    EXPECT_EQ(Weekday{kTuesday}, 4U);
    EXPECT_EQ(Weekday{kWednesday}, 8U);
    EXPECT_EQ(Weekday{kThursday}, 16U);
    EXPECT_EQ(Weekday{kFriday}, 32U);
    EXPECT_EQ(Weekday{kSaturday}, 64U);
}

}  // namespace
