// SPDX-License-Identifier: Apache-2.0
#include "support/workload.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <thread>

#include "support/operation.h"

namespace end_to_end {

namespace {

/// Events that have been fired and not yet come, as far as one thread knows.
constexpr std::size_t most_outstanding = 200;

/// Thread-safe as GoogleTest's own checks are.
void expectAnswer(Answer const &answer, Values const &results, char const *what) {
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << what;
    EXPECT_TRUE(answer.results == results) << what << ": the answer is another call's";
}

/// An asynchronous call and what its callback has to be given.
struct Asynchronous {
    PendingAnswer pending;
    Values expected;
};

/// Contexts stay where they are, since callbacks know their addresses.
using Contexts = std::deque<Asynchronous>;

void send(Contexts &contexts, void *handle, char const *name, Values const &inputs, Values expected) {
    Asynchronous &context = contexts.emplace_back();
    context.expected = std::move(expected);
    EXPECT_EQ(operation(name).sendAsync(handle, nullptr, inputs, context.pending), KORVO_CORE_STATUS_NO_ERROR)
        << name;
}

void oneRound(void *handle, std::string const &name, Contexts &contexts) {
    Answer const created = operation("create_ptz_preset_action").send(handle, nullptr, {name, "at " + name});
    ASSERT_EQ(created.status, KORVO_CORE_STATUS_NO_ERROR);
    Value const id = created.results.at(0);

    send(contexts, handle, "get_ptz_preset_action", {id}, {name, "at " + name});
    send(contexts, handle, "get_action_type", {id}, {4U});

    char *settings_request = nullptr;
    char *type_request = nullptr;
    EXPECT_EQ(operation("get_ptz_preset_action").nonBlockingSend(handle, nullptr, &settings_request, {id}),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(operation("get_action_type").nonBlockingSend(handle, nullptr, &type_request, {id}),
              KORVO_CORE_STATUS_NO_ERROR);
    expectAnswer(operation("get_action_type").receiveWithTimeout(handle, nullptr, -1, type_request), {4U},
                 "type");
    expectAnswer(operation("get_ptz_preset_action").receive(handle, 1, nullptr, settings_request),
                 {name, "at " + name}, "settings in two steps");

    expectAnswer(operation("modify_ptz_preset_action")
                     .sendWithTimeout(handle, nullptr, long_timeout_ms, {id, name + "!", "changed"}),
                 {}, "modify");
    expectAnswer(operation("get_ptz_preset_action").send(handle, nullptr, {id}), {name + "!", "changed"},
                 "settings");
    send(contexts, handle, "delete_action", {id}, {});
}

}  // namespace

void callFromThreads(std::vector<Client const *> const &clients, unsigned int threads, unsigned int rounds,
                     Automation const &automation, std::vector<EventRecorder const *> const &recorders) {
    // Contexts are valid as long as the clients are, and the clients end after this function.
    static std::deque<std::vector<Contexts>> contexts_of_all_calls;
    std::vector<Contexts> &contexts = contexts_of_all_calls.emplace_back(threads);
    std::atomic<std::size_t> fired{0};
    std::vector<std::thread> running;
    for (unsigned int n = 0; n < threads; ++n) {
        running.emplace_back([&, n] {
            Client const &client = *clients[n % clients.size()];
            for (unsigned int round = 0; round < rounds && !::testing::Test::HasFailure(); ++round) {
                oneRound(client.handle(), std::to_string(n) + "/" + std::to_string(round), contexts[n]);
                automation.fire(client);
                std::size_t const so_far = ++fired;
                for (EventRecorder const *const recorder : recorders) {
                    EXPECT_TRUE(so_far < most_outstanding ||
                                recorder->waitForCount(so_far - most_outstanding))
                        << "events are missing";
                }
            }
        });
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    for (Contexts const &of_thread : contexts) {
        for (Asynchronous const &call : of_thread) {
            auto const answer = call.pending.wait();
            ASSERT_TRUE(answer.has_value()) << "a callback is missing";
            expectAnswer(*answer, call.expected, "asynchronous");
        }
    }
    // A callback that comes a second time would come before the answer to a call that was made later.
    for (Client const *const client : clients) {
        EXPECT_EQ(call(operation("get_triggers"), Way::asynchronous, *client, nullptr, {}).status,
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    for (Contexts const &of_thread : contexts) {
        for (Asynchronous const &call : of_thread) {
            EXPECT_EQ(call.pending.count(), 1U);
        }
    }
}

}  // namespace end_to_end
