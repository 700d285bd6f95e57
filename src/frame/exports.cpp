// SPDX-License-Identifier: Apache-2.0
// The exported call forms, stamped from the operations' rows. Each only names its members and hands them to the
// form's function in call_forms.h. The public header declares them by hand, so the compiler compares.

#include "frame/call_forms.h"
#include "frame/initiator.h"
#include "korvo_api_action_engine.h"
#include "operations/protocol.h"

namespace {

IAction_engineInitiator &initiatorOf(void *handle) {
    return *static_cast<IAction_engineInitiator *>(handle);
}

int timeoutOf(unsigned char block) {
    return block != 0 ? call_forms::default_timeout : 0;
}

// The public header names the protocol's values for people.
constexpr bool same(std::uint32_t value, std::uint32_t value_in_header) {
    return value == value_in_header;
}
static_assert(same(protocol::send_email, kSendEmailAction));
static_assert(same(protocol::ftp_upload, kFtpUploadAction));
static_assert(same(protocol::save_snapshot, kSaveSnapshotAction));
static_assert(same(protocol::ptz_pattern, kPtzPatternAction));
static_assert(same(protocol::ptz_preset, kPtzPresetAction));
static_assert(same(protocol::ptz_tour, kPtzTourAction));
static_assert(same(protocol::ptz_scan, kPtzScanAction));
static_assert(same(protocol::run_wiper, kWiperAction));
static_assert(same(protocol::run_washer, kWasherAction));
static_assert(same(protocol::switch_relay, kRelayAction));
static_assert(same(protocol::onvif_event, kOnvifEventTrigger));
static_assert(same(protocol::reoccurring_timer, kReoccurringTimerTrigger));
static_assert(same(protocol::stable_onvif_event, kStableOnvifEventTrigger));
static_assert(same(protocol::every_weekday,
                   kSunday | kMonday | kTuesday | kWednesday | kThursday | kFriday | kSaturday));

}  // namespace

#define INPUT(kind, member) , operations::InputOf<operations::Kind::kind> member
#define OUT_POINTER(kind, member) , operations::OutPointerOf<operations::Kind::kind> member
#define ARGUMENT(kind, member) , member

#define SEND_STEP(op, INPUTS)                                                                    \
    [=, &initiator](char *identifier) {                                                          \
        return initiator.action_engine_##op##_utility_send(target, identifier INPUTS(ARGUMENT)); \
    }
#define RECEIVE_STEP(op, RESULTS, milliseconds)                                                            \
    [=, &initiator](char *identifier) {                                                                    \
        return initiator.action_engine_##op##_receive(target, milliseconds, identifier RESULTS(ARGUMENT)); \
    }

// The forms that the version handshake has too.
#define FORMS_WITHOUT_TIMEOUT(op, INPUTS, RESULTS)                                                          \
    korvo_core_status korvo_api_action_engine_##op##_send(                                                  \
        void *handle, char const *target INPUTS(INPUT) RESULTS(OUT_POINTER)) noexcept {                     \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                           \
        return call_forms::exchange(initiator, SEND_STEP(op, INPUTS),                                       \
                                    RECEIVE_STEP(op, RESULTS, call_forms::default_timeout));                \
    }                                                                                                       \
    korvo_core_status korvo_api_action_engine_##op##_non_blocking_send(                                     \
        void *handle, char const *target, char **request_id INPUTS(INPUT)) noexcept {                       \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                           \
        return call_forms::sendOnly(initiator, request_id, SEND_STEP(op, INPUTS));                          \
    }                                                                                                       \
    korvo_core_status korvo_api_action_engine_##op##_receive(                                               \
        void *handle, unsigned char block, char const *target,                                              \
        char *request_id RESULTS(OUT_POINTER)) noexcept {                                                   \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                           \
        return call_forms::receiveOnly(initiator, request_id, RECEIVE_STEP(op, RESULTS, timeoutOf(block))); \
    }                                                                                                       \
    korvo_core_status korvo_api_action_engine_##op##_send_async(                                            \
        void *handle, char const *target INPUTS(INPUT),                                                     \
        korvo_api_action_engine_##op##_method_callback_func_ptr callback, void *context) noexcept {         \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                           \
        return call_forms::sendAsync(initiator, initiator.op##_callbacks,                                   \
                                     reinterpret_cast<AnyCallback>(callback), context,                      \
                                     SEND_STEP(op, INPUTS));                                                \
    }                                                                                                       \
    korvo_core_status korvo_api_action_engine_##op##_cancel_async(                                          \
        void *handle, korvo_api_action_engine_##op##_method_callback_func_ptr callback,                     \
        void *context) noexcept {                                                                           \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                           \
        return call_forms::cancelAsync(initiator, initiator.op##_callbacks,                                 \
                                       reinterpret_cast<AnyCallback>(callback), context);                   \
    }

#define OPERATION(op, Method, INPUTS, RESULTS)                                                             \
    FORMS_WITHOUT_TIMEOUT(op, INPUTS, RESULTS)                                                             \
    korvo_core_status korvo_api_action_engine_##op##_send_with_timeout(                                    \
        void *handle, char const *target, int timeout INPUTS(INPUT) RESULTS(OUT_POINTER)) noexcept {       \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                          \
        return call_forms::exchange(initiator, SEND_STEP(op, INPUTS), RECEIVE_STEP(op, RESULTS, timeout)); \
    }                                                                                                      \
    korvo_core_status korvo_api_action_engine_##op##_receive_with_timeout(                                 \
        void *handle, char const *target, int timeout, char *request_id RESULTS(OUT_POINTER)) noexcept {   \
        IAction_engineInitiator &initiator = initiatorOf(handle);                                          \
        return call_forms::receiveOnly(initiator, request_id, RECEIVE_STEP(op, RESULTS, timeout));         \
    }
#define NO_INPUTS(INPUT)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) FORMS_WITHOUT_TIMEOUT(op, NO_INPUTS, RESULTS)

#include "operations/operations.def"

#undef NO_INPUTS
#undef FORMS_WITHOUT_TIMEOUT
#undef RECEIVE_STEP
#undef SEND_STEP
#undef ARGUMENT
#undef OUT_POINTER
#undef INPUT
