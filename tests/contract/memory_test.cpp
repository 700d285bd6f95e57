// SPDX-License-Identifier: Apache-2.0
// Memory that runs out at every place of a call in turn.

#include <algorithm>

#include "client_test.h"

namespace {

/// Far more allocations than any call makes.
constexpr std::size_t limit = 5000;

}  // namespace

class MemoryRunsOut : public EveryForm {
  protected:
    void SetUp() override {
        if (!live_blocks::canFail()) {
            GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
        }
        EveryForm::SetUp();
    }
};
FOR_EVERY_OPERATION_AND(MemoryRunsOut, Form::send, Form::send_with_timeout, Form::non_blocking_send,
                        Form::receive, Form::receive_with_timeout, Form::send_async);

TEST_P(MemoryRunsOut, EndsInAStatusAndLeavesNothingBehind) {
    std::size_t rounds = 0;
    expectLeftBehind({}, [&] {
        Client const client;
        Inputs const inputs(samples(expected().inputs));
        Context context;
        bool failed = true;
        for (std::size_t nth = 1; failed && nth < limit; ++nth, ++rounds) {
            fake_platform::script();
            if (receives(form())) {
                fake_platform::respond(responseOf(expected()));
            }
            Outs outs(kinds(expected().results));
            FormCall call;
            call.context = &context;
            call.request_id = sends(form()) ? nullptr : strdup(sample_request_id);
            korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
            failed = live_blocks::failNth(
                nth, [&] { status = callForm(client, name(), form(), call, inputs, outs); });
            if (failed) {
                EXPECT_TRUE(status == KORVO_CORE_STATUS_IPC_FAILED ||
                            status == KORVO_CORE_STATUS_ALLOC_FAILED)
                    << status << " at allocation " << nth;
                // A failure leaves the identifier to whoever holds it.
                korvo_api_action_engine_free_uuid(call.request_id);
            } else {
                EXPECT_EQ(status, KORVO_CORE_STATUS_NO_ERROR);
                if (form() == Form::non_blocking_send) {
                    korvo_api_action_engine_free_uuid(call.request_id);
                }
                if (receives(form())) {
                    EXPECT_EQ(outs.values(), samples(expected().results));
                }
            }
        }
        EXPECT_FALSE(failed);
        // What failed before has not spoilt the handle.
        fake_platform::script();
        EXPECT_TRUE(isUuid(sendAsync(client, name(), Callback::first, context)));
    });
    EXPECT_GT(rounds, 1U) << "no allocation was made to fail";
}

class MemoryRunsOutForAResponse : public EveryOperation {};
FOR_EVERY_OPERATION(MemoryRunsOutForAResponse);

TEST_P(MemoryRunsOutForAResponse, MakesNoCallAndKeepsTheRegistration) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
    }
    makeStatics();
    live_blocks::Recording recording;
    {
        Client const client;
        Context context;
        context.during = live_blocks::stopFailing;
        std::string const request_id = sendAsync(client, name(), Callback::first, context);
        json::Object const response = responseOf(expected());
        bool failed = true;
        std::size_t lines = 0;
        for (std::size_t nth = 1; failed && nth < limit; ++nth) {
            context.calls.clear();
            context.calls.shrink_to_fit();
            failed = live_blocks::failNth(nth, [&] {
                try {
                    fake_platform::deliverResponse(sample_target, request_id, response);
                } catch (std::bad_alloc const &) {
                    // It was the fake that ran out of memory.
                }
            });
            EXPECT_EQ(context.calls.size(), failed ? 0U : 1U) << nth;
            lines = std::max(lines, fake_platform::logLines().size());
        }
        EXPECT_FALSE(failed);
        EXPECT_EQ(context.calls.size(), 1U);
        // Numbers and flags reach a callback without a single allocation; nothing of the library's can fail then.
        bool const allocates = std::any_of(
            expected().results.begin(), expected().results.end(),
            [](Member const &result) { return result.kind != Kind::number && result.kind != Kind::flag; });
        EXPECT_EQ(lines > 0, allocates);
        for (fake_platform::LogLine const &line : fake_platform::logLines()) {
            EXPECT_TRUE(
                line == client.error(std::string("Threw an exception in function ") + expected().callback) ||
                line == client.warning(std::string(expected().callback) +
                                       " failed converting unsigned int array (2)") ||
                line ==
                    client.warning(std::string(expected().callback) + " failed converting char array (2)"))
                << line.text;
        }
    }
    fake_platform::reset();
    std::vector<live_blocks::Block> const left = recording.end();
    if (!HasFailure()) {
        // Texts copied before a failure are left behind on purpose.
        for (live_blocks::Block const &block : left) {
            std::free(block.address);
        }
    }
}

TEST(MemoryRunsOutForAHandle, GivesStatus2AndLeavesNothingOpenOrBehind) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
    }
    int sentinel = 0;
    std::size_t rounds = 0;
    expectLeftBehind({}, [&] {
        bool failed = true;
        for (std::size_t nth = 1; failed && nth < limit; ++nth, ++rounds) {
            fake_platform::script();
            void *handle = &sentinel;
            korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
            failed = live_blocks::failNth(nth, [&] {
                status =
                    korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, 1, "contract tests");
            });
            EXPECT_EQ(status, failed ? KORVO_CORE_STATUS_ALLOC_FAILED : KORVO_CORE_STATUS_NO_ERROR) << nth;
            EXPECT_EQ(handle == &sentinel, failed);
            if (!failed) {
                EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle), KORVO_CORE_STATUS_NO_ERROR);
            }
            EXPECT_EQ(fake_platform::openMessagingHandles(), 0U) << nth;
        }
        EXPECT_FALSE(failed);
    });
    // The method table alone has 55 entries.
    EXPECT_GT(rounds, 55U);
}

// A second one needs memory, and says so when there is none.
TEST(MemoryRunsOutForAnEventHandler, DoesNotKeepTheFirstOneFromEvents) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
    }
    fake_platform::script();
    ClientHandle const client("contract tests", true);
    static int events;
    events = 0;
    auto const count = [](unsigned int, char const *, unsigned char, char const *, void *) { ++events; };
    for (bool const needs_memory : {false, true}) {
        EXPECT_EQ(live_blocks::failNth(1,
                                       [&] {
                                           korvo_api_action_engine_action_completed_register_event_handler(
                                               client.handle(), count, nullptr);
                                       }),
                  needs_memory);
        json::Object event;
        event["event"] = json::String("Action_completed");
        event["action_id"] = json::Number(7);
        event["action_name"] = json::String("door");
        event["success"] = json::Boolean(true);
        fake_platform::deliverEvent("camera-1", event);
    }
    EXPECT_EQ(events, 2);
    fake_platform::reset();
}
