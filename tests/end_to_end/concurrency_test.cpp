// SPDX-License-Identifier: Apache-2.0
// Many threads, one handle or several, and the messaging's own threads in between.
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/automation.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workload.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

constexpr unsigned int threads = 8;
constexpr unsigned int rounds = sanitized ? 15 : 40;

/// A log without a response that nobody waited for, and without anything else that went wrong.
void expectQuietLog(std::size_t mark) {
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_EQ(log.find("received a callback for"), std::string::npos) << log;
    EXPECT_EQ(log.find("exception"), std::string::npos) << log;
    EXPECT_EQ(log.find(" err "), std::string::npos) << log;
    EXPECT_EQ(log.find(" warning "), std::string::npos) << log;
}

TEST(EightThreads, ShareOneHandle) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    Automation const automation(client, "busy");
    auto const mark = ErrorOutput::ofThisProgram().mark();

    callFromThreads({&client}, threads, rounds, automation, {&recorder});

    EXPECT_TRUE(recorder.waitForCount(threads * rounds)) << recorder.count();
    for (ActionCompleted const &event : recorder.events()) {
        EXPECT_EQ(event.action_id, automation.actionId());
    }
    EXPECT_EQ(recorder.count(), threads * rounds);
    EXPECT_EQ(numberOfActions(client), 1U) << "only the automation's is left";
    expectQuietLog(mark);
}

TEST(EightThreads, HaveAHandleEach) {
    EventRecorder recorders[threads];
    Service const service;
    std::vector<std::unique_ptr<Client>> clients;
    std::vector<Client const *> borrowed;
    std::vector<EventRecorder const *> all_recorders;
    for (EventRecorder &recorder : recorders) {
        all_recorders.push_back(&recorder);
        clients.push_back(std::make_unique<Client>(Events::subscribed));
        recorder.registerOn(*clients.back());
        borrowed.push_back(clients.back().get());
        // The service has the subscription when it has answered on the same connection.
        (void)numberOfActions(*clients.back());
    }
    Automation const automation(*clients[0], "busy");
    auto const mark = ErrorOutput::ofThisProgram().mark();

    callFromThreads(borrowed, threads, rounds, automation, all_recorders);

    for (EventRecorder const &recorder : recorders) {
        EXPECT_TRUE(recorder.waitForCount(threads * rounds)) << recorder.count();
        EXPECT_EQ(recorder.count(), threads * rounds);
    }
    expectQuietLog(mark);
}

/// Sends a two-step call, then more asynchronous ones than a handle remembers by mistake, and expects the response of the
/// first to be there.
void expectTheTwoStepCallToBeAnswered(Client const &client) {
    char *request_id = nullptr;
    ASSERT_EQ(korvo_api_action_engine_get_actions_non_blocking_send(client.handle(), nullptr, &request_id),
              KORVO_CORE_STATUS_NO_ERROR);
    for (int call = 0; call < 40; ++call) {
        EXPECT_EQ(korvo_api_action_engine_get_actions_send_async(client.handle(), nullptr, nullptr, nullptr),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    unsigned int **ids = nullptr;
    unsigned int **types = nullptr;
    korvo_core_status const status =
        korvo_api_action_engine_get_actions_receive(client.handle(), 1, nullptr, request_id, &ids, &types);
    EXPECT_EQ(status, KORVO_CORE_STATUS_NO_ERROR);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        korvo_api_action_engine_free_uuid(request_id);
    }
    korvo_core_free_uint_array(types);
    korvo_core_free_uint_array(ids);
}

void ignoreCreated(char *, korvo_core_status, unsigned int, void *) {}

TEST(AfterAnEarlyEndOfAnAsynchronousCall, ATwoStepCallIsAnsweredToItsReceive) {
    Service const service;
    Client const client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    EXPECT_EQ(korvo_api_action_engine_create_wiper_action_send_async(client.handle(), nullptr, nullptr,
                                                                     ignoreCreated, nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    expectTheTwoStepCallToBeAnswered(client);
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_EQ(log.find("received a callback for"), std::string::npos) << log;
}

struct InsideACallback {
    Client const *client;
    std::promise<void> done;
};

void startItsOwnOperation(char *, korvo_core_status, unsigned int **, unsigned int **, void *context) {
    auto &inside = *static_cast<InsideACallback *>(context);
    EXPECT_EQ(
        korvo_api_action_engine_get_actions_send_async(inside.client->handle(), nullptr, nullptr, nullptr),
        KORVO_CORE_STATUS_IPC_FAILED);
    unsigned int **ids = nullptr;
    unsigned int **types = nullptr;
    EXPECT_EQ(korvo_api_action_engine_get_actions_send(inside.client->handle(), nullptr, &ids, &types),
              KORVO_CORE_STATUS_NO_ERROR);
    korvo_core_free_uint_array(types);
    korvo_core_free_uint_array(ids);
    inside.done.set_value();
}

TEST(AfterAnEarlyEndOfAnAsynchronousCall, ACallFromInsideTheCallbackIsAnsweredThere) {
    Service const service;
    Client const client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    InsideACallback inside{&client, {}};
    ASSERT_EQ(korvo_api_action_engine_get_actions_send_async(client.handle(), nullptr, startItsOwnOperation,
                                                             &inside),
              KORVO_CORE_STATUS_NO_ERROR);
    inside.done.get_future().wait();
    expectTheTwoStepCallToBeAnswered(client);
    expectQuietLog(mark);
}

/// Client handles that share one messaging handle, stopped in the order that sharing needs.
class SharedMessaging {
  public:
    explicit SharedMessaging(std::size_t count) {
        EXPECT_EQ(korvo_core_ipc_initiator_init(nullptr, "shared", &messaging_, 1),
                  KORVO_CORE_STATUS_NO_ERROR);
        for (std::size_t n = 0; n < count; ++n) {
            clients_.push_back(std::make_unique<Client>(Events::ignored, messaging_));
        }
    }
    ~SharedMessaging() { EXPECT_EQ(korvo_core_ipc_deinit(messaging_), KORVO_CORE_STATUS_NO_ERROR); }
    SharedMessaging(SharedMessaging const &) = delete;
    SharedMessaging &operator=(SharedMessaging const &) = delete;

    Client const &operator[](std::size_t n) const { return *clients_[n]; }

  private:
    void *messaging_ = nullptr;
    std::vector<std::unique_ptr<Client>> clients_;
};

TEST(SharedMessagingHandle, GivesEachClientItsOwnResponses) {
    Service const service;
    SharedMessaging const clients(2);
    Automation const automation(clients[0], "busy");
    auto const mark = ErrorOutput::ofThisProgram().mark();
    callFromThreads({&clients[0], &clients[1]}, threads, rounds, automation);
    expectQuietLog(mark);
}

TEST(SharedMessagingHandle, KeepsTwoStepCallsOfTwoClientsApart) {
    Service const service;
    SharedMessaging const clients(2);
    void *const first = clients[0].handle();
    void *const second = clients[1].handle();
    Value const one = operation("create_wiper_action").send(first, nullptr, {"one"}).results.at(0);
    Value const two = operation("create_wiper_action").send(second, nullptr, {"two"}).results.at(0);

    char *first_request = nullptr;
    char *second_request = nullptr;
    Operation const &get = operation("get_wiper_action");
    ASSERT_EQ(get.nonBlockingSend(first, nullptr, &first_request, {one}), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(get.nonBlockingSend(second, nullptr, &second_request, {two}), KORVO_CORE_STATUS_NO_ERROR);
    // An asynchronous call of one client in between takes no response away from the other.
    EXPECT_EQ(call(get, Way::asynchronous, clients[1], nullptr, {two}).results, (Values{"two"}));
    EXPECT_EQ(get.receive(second, 1, nullptr, second_request).results, (Values{"two"}));
    EXPECT_EQ(get.receive(first, 1, nullptr, first_request).results, (Values{"one"}));
}

TEST(Callbacks, MayMakeSynchronousCalls) {
    static PendingAnswer asynchronous;
    EventRecorder recorder;
    Answer from_callback;
    Answer from_handler;
    Service const service;
    Client client(Events::subscribed);
    Automation const automation(client, "calls");

    // The same operation too: only its asynchronous forms are closed to its own callback.
    asynchronous.also = [&](Answer const &) {
        from_callback = operation("get_actions").send(client.handle(), nullptr, {});
    };
    recorder.also = [&](ActionCompleted const &event) {
        from_handler = operation("get_ptz_preset_action").send(client.handle(), nullptr, {event.action_id});
    };
    recorder.registerOn(client);
    ASSERT_EQ(operation("get_actions").sendAsync(client.handle(), nullptr, {}, asynchronous),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(asynchronous.wait().has_value());
    EXPECT_EQ(from_callback.status, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(from_callback.results, (Values{Numbers{automation.actionId()}, Numbers{4}}));

    automation.fire(client);
    ASSERT_TRUE(recorder.waitForCount(1));
    EXPECT_EQ(from_handler.status, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(from_handler.results, (Values{"tns1:Test/calls", "gate"}));
}

TEST(Callbacks, MayNotCallTheirOwnOperationAsynchronously) {
    static PendingAnswer pending;
    static PendingAnswer inner;
    korvo_core_status send_own = KORVO_CORE_STATUS_NO_ERROR;
    korvo_core_status cancel_own = KORVO_CORE_STATUS_NO_ERROR;
    korvo_core_status send_other = KORVO_CORE_STATUS_IPC_FAILED;
    Service const service;
    Client client;
    pending.also = [&](Answer const &) {
        send_own = operation("get_actions").sendAsync(client.handle(), nullptr, {}, inner);
        cancel_own = operation("get_actions").cancelAsync(client.handle(), pending);
        send_other = operation("get_triggers").sendAsync(client.handle(), nullptr, {}, inner);
    };
    ASSERT_EQ(operation("get_actions").sendAsync(client.handle(), nullptr, {}, pending),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(pending.wait().has_value());
    EXPECT_EQ(send_own, KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(cancel_own, KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(send_other, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(inner.wait().has_value());
    EXPECT_EQ(inner.count(), 1U);
}

TEST(EventHandlers, MayNotChangeTheListOfHandlers) {
    EventRecorder recorder;
    EventRecorder never;
    Service const service;
    Client client(Events::subscribed);
    Automation const automation(client, "handlers");
    recorder.also = [&](ActionCompleted const &) {
        never.registerOn(client);
        recorder.unregisterFrom(client);
    };
    recorder.registerOn(client);
    auto const mark = ErrorOutput::ofThisProgram().mark();
    automation.fire(client);
    automation.fire(client);
    ASSERT_TRUE(recorder.waitForCount(2)) << "the handler is still registered";
    EXPECT_EQ(never.count(), 0U);
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_EQ(count(log,
                    "Threw an exception in function "
                    "korvo_api_action_engine_action_completed_register_event_handler"),
              2U)
        << log;
    EXPECT_EQ(count(log,
                    "Threw an exception in function "
                    "korvo_api_action_engine_action_completed_unregister_event_handler_with_context"),
              2U)
        << log;
}

TEST(BlockedHandler, DelaysNobodyElse) {
    Latch leave;
    Latch entered;
    EventRecorder blocked;
    EventRecorder other;
    blocked.also = [&](ActionCompleted const &) {
        entered.open();
        (void)leave.wait();
    };
    Service const service;
    Client blocked_client(Events::subscribed);
    Client other_client(Events::subscribed);
    blocked.registerOn(blocked_client);
    other.registerOn(other_client);
    (void)numberOfActions(blocked_client);
    Automation const automation(other_client, "blocked");
    automation.fire(other_client);
    ASSERT_TRUE(entered.wait());

    constexpr unsigned int more = 20;
    for (unsigned int n = 0; n < more; ++n) {
        automation.fire(other_client);
    }
    EXPECT_TRUE(other.waitForCount(1 + more)) << "events of another client";
    EXPECT_EQ(numberOfActions(blocked_client), 1U) << "a synchronous call on the blocked client itself";
    EXPECT_EQ(blocked.count(), 0U);
    leave.open();
    EXPECT_TRUE(blocked.waitForCount(1 + more)) << "what came in the meantime is delivered then";
}

}  // namespace

}  // namespace end_to_end
