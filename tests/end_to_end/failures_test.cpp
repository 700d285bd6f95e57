// SPDX-License-Identifier: Apache-2.0
// A service that is not there, hangs, dies, refuses or stays silent: the status within the time-out, and a handle that
// works again as soon as the service does.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <deque>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/automation.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

constexpr auto lost = KORVO_CORE_STATUS_IPC_FAILED;
constexpr auto timed_out = KORVO_CORE_STATUS_IPC_FAILED;
constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;

std::string storeFile() {
    return (Workspace::ofThisProgram().newFolder("store") / "catalogue.db").string();
}

Answer getCounts(Client const &client, int timeout = long_timeout_ms) {
    return operation("get_action_counts").sendWithTimeout(client.handle(), nullptr, timeout, {});
}

TEST(NoService, IsToldAtOnce) {
    Client client(Events::subscribed);
    for (Way const way : all_ways) {
        Answer answer;
        auto const taken = timeOf([&] { answer = call(operation("get_actions"), way, client, nullptr, {}); });
        EXPECT_EQ(answer.status, KORVO_CORE_STATUS_DISABLED_TARGET) << nameOf(way);
        EXPECT_LT(taken, at_once) << nameOf(way);
    }
    Service const service;
    EXPECT_EQ(getCounts(client).status, done) << "the same handle, now that there is a service";
}

TEST(NoService, IsToldForAnotherTarget) {
    Service const service({"--target", "garden"});
    Client client;
    Operation const &query = operation("get_actions");
    EXPECT_EQ(query.send(client.handle(), "garden", {}).status, done);
    for (char const *const target :
         {static_cast<char const *>(nullptr), "", "Garden", "../garden", "garden "}) {
        EXPECT_EQ(query.send(client.handle(), target, {}).status, KORVO_CORE_STATUS_DISABLED_TARGET)
            << (target != nullptr ? target : "NULL");
    }
}

TEST(Targets, HaveACatalogueEach) {
    std::string const odd = "../" + std::string(4000, 'x') + "\n\xf0\x9f\x98\x80";
    Service const garden({"--target", "garden"});
    Service const hostile({"--target", odd});
    Service const standard;
    Client client;
    auto const create = [&](char const *target, char const *name) {
        return operation("create_wiper_action").send(client.handle(), target, {name}).status;
    };
    ASSERT_EQ(create("garden", "a"), done);
    ASSERT_EQ(create(odd.c_str(), "b"), done);
    ASSERT_EQ(create(odd.c_str(), "c"), done);
    Operation const &counts = operation("get_action_counts");
    EXPECT_EQ(counts.send(client.handle(), "garden", {}).results.at(0), Value(1U));
    EXPECT_EQ(counts.send(client.handle(), odd.c_str(), {}).results.at(0), Value(2U));
    EXPECT_EQ(counts.send(client.handle(), nullptr, {}).results.at(0), Value(0U));
    EXPECT_EQ(counts.send(client.handle(), "", {}).results.at(0), Value(0U));
}

/// A call that hangs since the service holds its answer back, and what it returns.
class HangingCall {
  public:
    /// Returns when the service has taken the command.
    explicit HangingCall(Client const &client) : client_(client) {
        EXPECT_EQ(operation("get_triggers").nonBlockingSend(client.handle(), nullptr, &request_id_, {}),
                  done);
        // Answered in order, so this one's answer says that the command before it has arrived.
        EXPECT_EQ(getCounts(client).status, done);
    }
    ~HangingCall() { korvo_api_action_engine_free_uuid(request_id_); }
    HangingCall(HangingCall const &) = delete;
    HangingCall &operator=(HangingCall const &) = delete;

    Answer wait() const {
        return operation("get_triggers")
            .receiveWithTimeout(client_.handle(), nullptr, long_timeout_ms, request_id_);
    }

  private:
    Client const &client_;
    char *request_id_ = nullptr;
};

TEST(KilledService, EndsEveryWaitingCallAtOnce) {
    Service service({"--delay", "Get_triggers=600000"});
    Client client;
    std::vector<std::unique_ptr<HangingCall>> calls;
    std::vector<std::future<Answer>> answers;
    for (int n = 0; n < 4; ++n) {
        calls.push_back(std::make_unique<HangingCall>(client));
        answers.push_back(std::async(std::launch::async, [&call = *calls.back()] { return call.wait(); }));
    }
    // None of them returns by itself.
    EXPECT_EQ(answers[0].wait_for(milliseconds(100)), std::future_status::timeout);
    service.kill();
    auto const taken = timeOf([&] {
        for (auto &answer : answers) {
            EXPECT_EQ(answer.get().status, lost);
        }
    });
    EXPECT_LT(taken, at_once);

    EXPECT_EQ(getCounts(client).status, KORVO_CORE_STATUS_DISABLED_TARGET);
    service.start();
    EXPECT_EQ(getCounts(client).status, done) << "the next call on the same handle";
}

TEST(KilledService, EndsAPlainSendAtOnce) {
    Service service({"--delay", "Get_triggers=600000"});
    Client client;
    ASSERT_EQ(getCounts(client).status, done);
    auto answer = std::async(std::launch::async, [&] {
        return operation("get_triggers").sendWithTimeout(client.handle(), nullptr, long_timeout_ms, {});
    });
    EXPECT_EQ(answer.wait_for(milliseconds(100)), std::future_status::timeout);
    service.kill();
    auto const taken = timeOf([&] { EXPECT_EQ(answer.get().status, lost); });
    EXPECT_LT(taken, at_once);
}

TEST(KilledService, IsReplacedWithoutTheClientNoticing) {
    std::string const store = storeFile();
    Service service({"--store", store});
    Client client;
    for (unsigned int round = 0; round < 5; ++round) {
        ASSERT_EQ(operation("create_wiper_action").send(client.handle(), nullptr, {"wipe"}).status, done);
        ASSERT_EQ(numberOfActions(client), round + 1) << "no command is sent twice";
        service.kill();
        service.start();
    }
}

TEST(KilledService, EndsWhatWasPendingWithStatus4Once) {
    static PendingAnswer pending;
    Service service({"--delay", "Get_triggers=600000"});
    Client client;
    ASSERT_EQ(operation("get_triggers").sendAsync(client.handle(), nullptr, {}, pending), done);
    ASSERT_EQ(getCounts(client).status, done);
    service.kill();
    service.start();
    auto const answer = pending.wait();
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->status, KORVO_CORE_STATUS_IPC_FAILED);
    // A later asynchronous call of the same handle is answered by the service.
    EXPECT_EQ(call(operation("get_actions"), Way::asynchronous, client, nullptr, {}).status, done);
    client.close();
    EXPECT_EQ(pending.count(), 1U);
}

TEST(PendingCalls, DoNotHoldAHandleOpen) {
    static PendingAnswer pending[2];
    Service service({"--delay", "Get_triggers=600000"});
    Client while_alive;
    Client while_stopped(Events::subscribed);
    ASSERT_EQ(operation("get_triggers").sendAsync(while_alive.handle(), nullptr, {}, pending[0]), done);
    ASSERT_EQ(operation("get_triggers").sendAsync(while_stopped.handle(), nullptr, {}, pending[1]), done);
    ASSERT_EQ(getCounts(while_alive).status, done);
    while_alive.close();
    service.pause();
    while_stopped.close();
    service.resume();
    EXPECT_EQ(pending[0].count() + pending[1].count(), 0U);
}

TEST(StoppedService, IsWaitedForAsLongAsTheTimeoutSays) {
    Service service;
    Client connected;
    ASSERT_EQ(getCounts(connected).status, done);
    service.pause();
    Client unconnected;
    for (Client const *const client : {&connected, &unconnected}) {
        Answer answer;
        auto const taken = timeOf([&] { answer = getCounts(*client, 200); });
        EXPECT_EQ(answer.status, timed_out);
        EXPECT_GE(taken.count(), 150);
        EXPECT_LT(taken.count(), 2000);
    }
    auto const taken = timeOf([&] { EXPECT_EQ(getCounts(connected, 0).status, timed_out); });
    EXPECT_LT(taken, at_once) << "a time-out of 0 does not wait";
    service.resume();
    EXPECT_EQ(getCounts(connected).status, done);
    EXPECT_EQ(getCounts(unconnected).status, done);
}

TEST(StoppedService, DisturbsNoLaterCallWithItsLateAnswers) {
    Service service;
    Client client;
    Value const wiper =
        operation("create_wiper_action").send(client.handle(), nullptr, {"late"}).results.at(0);
    service.pause();
    char *request_id = nullptr;
    ASSERT_EQ(operation("get_wiper_action").nonBlockingSend(client.handle(), nullptr, &request_id, {wiper}),
              done);
    EXPECT_EQ(
        operation("get_wiper_action").receiveWithTimeout(client.handle(), nullptr, 50, request_id).status,
        timed_out);
    for (int n = 0; n < 5; ++n) {
        EXPECT_EQ(operation("get_wiper_action").sendWithTimeout(client.handle(), nullptr, 20, {wiper}).status,
                  timed_out);
    }
    service.resume();
    EXPECT_EQ(operation("get_action_type").send(client.handle(), nullptr, {wiper}).results, (Values{7U}));
    EXPECT_EQ(operation("get_wiper_action").receive(client.handle(), 1, nullptr, request_id).results,
              (Values{"late"}))
        << "a receive that timed out is tried again";
    EXPECT_EQ(operation("get_wiper_action").send(client.handle(), nullptr, {wiper}).results,
              (Values{"late"}));
}

TEST(StoppedService, EndsNegativeTimeoutsOnlyWithItsAnswer) {
    Service service;
    Client client;
    ASSERT_EQ(getCounts(client).status, done);
    service.pause();
    auto answer = std::async(std::launch::async, [&] { return getCounts(client, -1); });
    EXPECT_EQ(answer.wait_for(milliseconds(300)), std::future_status::timeout);
    service.resume();
    EXPECT_EQ(answer.get().status, done);
}

TEST(DroppedCommands, TimeOutAndLeaveTheHandleUsable) {
    Service const service({"--drop", "Create_wiper_action"});
    Client client;
    Answer answer;
    auto const taken = timeOf([&] {
        answer = operation("create_wiper_action").sendWithTimeout(client.handle(), nullptr, 200, {"lost"});
    });
    EXPECT_EQ(answer.status, timed_out);
    EXPECT_GE(taken.count(), 150);
    EXPECT_LT(taken.count(), 2000);
    EXPECT_EQ(numberOfActions(client), 0U);
}

TEST(DelayedAnswers, HoldUpNoOtherCall) {
    Service const service({"--delay", "Get_triggers=600000", "--delay", "Get_trigger_counts=300"});
    Client client;
    HangingCall const hanging(client);
    auto const taken = timeOf(
        [&] { EXPECT_EQ(operation("get_trigger_counts").send(client.handle(), nullptr, {}).status, done); });
    EXPECT_GE(taken.count(), 250) << "the delay that was asked for";
    EXPECT_EQ(getCounts(client).status, done);
}

TEST(FailingMethods, PassTheirStatusThrough) {
    Service const service({"--fail", "Get_actions=9", "--fail", "Get_triggers=1", "--fail",
                           "Get_action_counts=8", "--fail", "Get_trigger_counts=77"});
    Client client;
    struct {
        char const *operation;
        unsigned int status;
    } const expected[] = {
        {"get_actions", 9}, {"get_triggers", 1}, {"get_action_counts", 8}, {"get_trigger_counts", 77}};
    for (auto const &[name, status] : expected) {
        for (Way const way : all_ways) {
            EXPECT_EQ(static_cast<unsigned int>(call(operation(name), way, client, nullptr, {}).status),
                      status)
                << name << " " << nameOf(way);
        }
    }
    EXPECT_EQ(operation("create_wiper_action").send(client.handle(), nullptr, {"fine"}).status, done);
}

TEST(TooLongMessages, AreRefusedAndHarmNothing) {
    Service const service;
    Client client;
    std::string const huge(1200 * 1024, 'x');
    auto const mark = ErrorOutput::ofThisProgram().mark();
    for (Way const way : all_ways) {
        EXPECT_EQ(call(operation("create_wiper_action"), way, client, nullptr, {huge}).status,
                  KORVO_CORE_STATUS_IPC_FAILED)
            << nameOf(way);
    }
    EXPECT_TRUE(ErrorOutput::ofThisProgram().waitFor("was not sent", mark));
    EXPECT_EQ(numberOfActions(client), 0U);
}

TEST(Subscription, IsMadeAgainAfterARestartAndTheGapIsLogged) {
    EventRecorder recorder;
    std::string const store = storeFile();
    Service service({"--store", store});
    Client subscribed(Events::subscribed);
    recorder.registerOn(subscribed);
    Client other;
    (void)numberOfActions(subscribed);
    Automation const automation(other, "restart");
    automation.fire(other);
    ASSERT_TRUE(recorder.waitForCount(1));

    for (unsigned int round = 0; round < 2; ++round) {
        auto const mark = ErrorOutput::ofThisProgram().mark();
        round == 0 ? service.kill() : service.stop();
        service.start();
        // The client that waits for events makes no call: its subscription comes back by itself.
        ASSERT_TRUE(ErrorOutput::ofThisProgram().waitFor(
            "subscribed again to service action_engine; its events of the last ", mark));
        EXPECT_EQ(count(ErrorOutput::ofThisProgram().since(mark), "its events are missed until it is back"),
                  1U);
        std::size_t const before = recorder.count();
        auto const limit = Clock::now() + patience;
        while (recorder.count() == before && Clock::now() < limit) {
            automation.fire(other);
            (void)recorder.waitForCount(before + 1, milliseconds(100));
        }
        ASSERT_GT(recorder.count(), before);
        // Subscribed once and not twice.
        std::size_t const now = recorder.count();
        automation.fire(other);
        ASSERT_TRUE(recorder.waitForCount(now + 1));
        (void)call(operation("get_actions"), Way::asynchronous, subscribed, nullptr, {});
        EXPECT_EQ(recorder.count(), now + 1);
    }
}

TEST(Handles, LeaveNoDescriptorAndNoThreadBehind) {
    static std::deque<PendingAnswer> pending;
    Service service({"--delay", "Get_triggers=600000"});
    Resources before;
    for (unsigned int round = 0; round < 6; ++round) {
        if (round == 1) {
            // The first round has made what is made once for the process.
            before = resourcesOf(getpid());
        }
        {
            Client subscribed(Events::subscribed);
            Client plain;
            for (Client const *const client : {&subscribed, &plain}) {
                ASSERT_EQ(operation("get_triggers")
                              .sendAsync(client->handle(), nullptr, {}, pending.emplace_back()),
                          done);
                ASSERT_EQ(getCounts(*client).status, done);
            }
            if (round % 2 == 1) {
                service.kill();
                EXPECT_NE(getCounts(plain).status, done);
            }
        }
        if (!service.running()) {
            service.start();
        }
    }
    Resources const after = resourcesOf(getpid());
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
}

TEST(Subscription, BeginsWhenTheServiceComesLater) {
    EventRecorder recorder;
    Client subscribed(Events::subscribed);
    recorder.registerOn(subscribed);
    Service const service;
    Client other;
    Automation const automation(other, "late");
    auto const limit = Clock::now() + patience;
    while (recorder.count() == 0 && Clock::now() < limit) {
        automation.fire(other);
        (void)recorder.waitForCount(1, milliseconds(100));
    }
    EXPECT_GT(recorder.count(), 0U);
}

}  // namespace

}  // namespace end_to_end
