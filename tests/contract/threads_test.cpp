// SPDX-License-Identifier: Apache-2.0
// One handle shared by many threads, while responses and events arrive on others.

#include <atomic>
#include <set>
#include <thread>

#include "client_test.h"

using fake_platform::Call;
using fake_platform::Function;

namespace {

constexpr unsigned int rounds = 40;

std::atomic<unsigned int> events_seen{0};

void countEvent(unsigned int, char const *, unsigned char, char const *, void *) {
    ++events_seen;
}

void ignoreEvent(unsigned int, char const *, unsigned char, char const *, void *) {}

json::Object completed() {
    json::Object event;
    event["event"] = json::String("Action_completed");
    event["action_id"] = json::Number(7);
    event["action_name"] = json::String("door");
    event["success"] = json::Boolean(true);
    return event;
}

}  // namespace

TEST(Threads, ShareAHandleWhileResponsesAndEventsArrive) {
    events_seen = 0;
    Client const client(1);
    Expectation const &row = expectation("get_action_type");
    korvo_api_action_engine_action_completed_register_event_handler(client.handle(), countEvent, nullptr);
    Context context;
    Context foreign;
    std::string const request_id = sendAsync(client, row.operation, Callback::first, context);

    std::vector<std::thread> threads;
    for (unsigned int caller = 0; caller < 4; ++caller) {
        threads.emplace_back([&] {
            for (unsigned int round = 0; round < rounds; ++round) {
                unsigned int action_type = 0;
                fake_platform::respond(responseOf(row));
                EXPECT_EQ(korvo_api_action_engine_get_action_type_send(client.handle(), sample_target, round,
                                                                       &action_type),
                          KORVO_CORE_STATUS_NO_ERROR);
                EXPECT_EQ(action_type, 7U);
                EXPECT_EQ(operation(row.operation)
                              .sendAsync(client.handle(), sample_target, Inputs(samples(row.inputs)),
                                         Callback::second, &foreign),
                          KORVO_CORE_STATUS_NO_ERROR);
                EXPECT_EQ(operation(row.operation).cancelAsync(client.handle(), Callback::none, &foreign),
                          KORVO_CORE_STATUS_NO_ERROR);
            }
        });
    }
    threads.emplace_back([&] {
        for (unsigned int round = 0; round < rounds; ++round) {
            fake_platform::deliverResponse(sample_target, request_id, responseOf(row));
        }
    });
    threads.emplace_back([&] {
        for (unsigned int round = 0; round < rounds; ++round) {
            fake_platform::deliverEvent(sample_target, completed());
        }
    });
    threads.emplace_back([&] {
        for (unsigned int round = 0; round < rounds; ++round) {
            korvo_api_action_engine_action_completed_register_event_handler(client.handle(), ignoreEvent,
                                                                            nullptr);
            korvo_api_action_engine_action_completed_unregister_event_handler(client.handle(), ignoreEvent);
        }
    });
    for (std::thread &thread : threads) {
        thread.join();
    }

    EXPECT_EQ(context.calls.size(), rounds);
    EXPECT_EQ(events_seen, rounds);
    EXPECT_TRUE(fake_platform::logLines().empty());
    std::set<std::string> identifiers;
    for (Call const &sent : fake_platform::calls(Function::send_command)) {
        identifiers.insert(sent.request_id.value_or(""));
    }
    EXPECT_EQ(identifiers.size(), 1 + 4 * rounds * 2) << "an identifier was handed out twice";
}

TEST(Threads, WaitForTheCallbackOfTheirOperationOnly) {
    Client const client;
    Expectation const &row = expectation("get_action_type");
    Context context;
    Context foreign;
    std::atomic<bool> inside{false};
    std::atomic<bool> other_done{false};
    std::atomic<bool> callback_done{false};
    context.during = [&] {
        inside = true;
        // The other thread gets on with another operation while this callback holds the mutex of its own.
        while (!other_done) {
            std::this_thread::yield();
        }
        callback_done = true;
    };
    std::string const request_id = sendAsync(client, row.operation, Callback::first, context);
    std::thread messaging(
        [&] { fake_platform::deliverResponse(sample_target, request_id, responseOf(row)); });
    while (!inside) {
        std::this_thread::yield();
    }
    (void)sendAsync(client, "get_trigger_type", Callback::first, foreign);
    EXPECT_EQ(operation("get_trigger_type").cancelAsync(client.handle(), Callback::none, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    other_done = true;
    // Of the same operation it waits until the callback is over.
    EXPECT_EQ(operation(row.operation).cancelAsync(client.handle(), Callback::none, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(callback_done);
    messaging.join();
    EXPECT_EQ(context.calls.size(), 1U);
}
