// SPDX-License-Identifier: Apache-2.0
// Asynchronous commands of objects: each that was taken is answered once, whatever becomes of the service.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "development/child_process.h"
#include "korvo_core_private.h"
#include "support/ends.h"

namespace {

constexpr char const *substitute = "no response";

/// The object of a client: counts the responses to each command.
class Caller {
  public:
    explicit Caller(Client &client) : client_(client) {
        EXPECT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), take, this),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    Caller(Caller const &) = delete;
    Caller &operator=(Caller const &) = delete;

    korvo_core_status send(std::string const &id, std::string const &command) {
        return korvo_core_private_command_send(client_.handle(), "sample", "", id.c_str(), command.c_str(),
                                               command.size(), this, substitute);
    }

    struct Answer {
        std::string id;
        std::string response;
    };
    Mailbox<Answer> answers;
    /// Called with each response on the messaging thread, before it is noted.
    std::function<void(Answer const &)> at_response;

  private:
    static void take(char **, char **, char **request_id, char **response, void *context) {
        auto &self = *static_cast<Caller *>(context);
        Answer const answer{*request_id, *response};
        if (self.at_response) {
            self.at_response(answer);
        }
        self.answers.put(answer);
    }

    Client &client_;
};

/// A caller whose messaging thread is inside a callback, as long as this lives.
class InCallback {
  public:
    InCallback(Service &service, Caller &caller, std::chrono::milliseconds limit = patience)
        : caller_(caller) {
        caller.at_response = [this, limit](Caller::Answer const &answer) {
            if (answer.id == "first") {
                begun_.open();
                EXPECT_TRUE(go_on_.wait(limit));
            }
        };
        EXPECT_EQ(caller.send("first", "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Command first;
        EXPECT_EQ(service.poll(first), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(service.respond(first, "{}"), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_TRUE(begun_.wait());
    }
    ~InCallback() {
        go_on_.open();
        EXPECT_TRUE(caller_.answers.take().has_value());
    }
    InCallback(InCallback const &) = delete;
    InCallback &operator=(InCallback const &) = delete;

  private:
    Caller &caller_;
    Gate begun_;
    Gate go_on_;
};

}  // namespace

TEST(AsynchronousCalls, AreAnsweredByTheService) {
    Service service;
    service.answerWith([](Command const &command) { return command.command + "!"; });
    Client client;
    Caller caller(client);
    ASSERT_EQ(caller.send("id", "hello"), KORVO_CORE_STATUS_NO_ERROR);
    auto const answer = caller.answers.take();
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->id, "id");
    EXPECT_EQ(answer->response, "hello!");
}

TEST(AsynchronousCalls, EndWithTheSubstituteWhenTheServiceDies) {
    auto process = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(process->isReady());
    Client client;
    Caller caller(client);
    constexpr int count = 200;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(caller.send(std::to_string(number), "silent"), KORVO_CORE_STATUS_NO_ERROR);
    }
    process->kill();
    std::map<std::string, int> answered;
    for (int number = 0; number < count; ++number) {
        auto const answer = caller.answers.take();
        ASSERT_TRUE(answer.has_value()) << number;
        EXPECT_EQ(answer->response, substitute);
        ++answered[answer->id];
    }
    EXPECT_EQ(answered.size(), static_cast<std::size_t>(count));
    // The next call connects again, and nothing is answered twice.
    ServiceProcess const another;
    ASSERT_TRUE(another.isReady());
    ASSERT_EQ(caller.send("next", "echo"), KORVO_CORE_STATUS_NO_ERROR);
    auto const next = caller.answers.take();
    ASSERT_TRUE(next.has_value());
    EXPECT_EQ(next->id, "next");
    EXPECT_EQ(next->response, "echo");
}

TEST(AsynchronousCalls, ThatWereNotTakenAreNotAnswered) {
    Client client;
    Caller caller(client);
    EXPECT_EQ(caller.send("absent", "echo"), KORVO_CORE_STATUS_DISABLED_TARGET);
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    EXPECT_EQ(caller.send("large", std::string(1024 * 1024, 'x')), KORVO_CORE_STATUS_IPC_FAILED);
    ASSERT_EQ(caller.send("good", "echo"), KORVO_CORE_STATUS_NO_ERROR);
    auto const answer = caller.answers.take();
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->id, "good");
    client.close();
    EXPECT_EQ(caller.answers.count(), 1U);
}

TEST(AsynchronousCalls, AreAnsweredWithTheSubstituteWhereTooManyResponsesWait) {
    Service service;
    Client client;
    Caller caller(client);
    std::optional<InCallback> in_callback(std::in_place, service, caller);
    service.answerWith([](Command const &command) { return command.command; });
    // 32 MiB of responses wait for the callback at most; a synchronous command reads them all.
    std::string const large(512 * 1024, 'x');
    constexpr int count = 80;
    char *response = nullptr;
    std::size_t length = 0;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(caller.send(std::to_string(number), large), KORVO_CORE_STATUS_NO_ERROR) << number;
        std::string const id = "marker " + std::to_string(number);
        ASSERT_EQ(korvo_core_private_command_send(client.handle(), "sample", "", id.c_str(), "{}", 2, &caller,
                                                  nullptr),
                  KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(korvo_core_private_response_receive(client.handle(), 20000, id.c_str(), &response, &length),
                  KORVO_CORE_STATUS_NO_ERROR);
        std::free(response);
    }
    in_callback.reset();
    int substitutes = 0;
    for (int number = 0; number < count; ++number) {
        auto const answer = caller.answers.take();
        ASSERT_TRUE(answer.has_value()) << number;
        EXPECT_EQ(answer->id, std::to_string(number));
        substitutes += answer->response == substitute ? 1 : 0;
    }
    // 63 of them and their identifiers fit.
    EXPECT_EQ(substitutes, count - 63);
}

TEST(AsynchronousCalls, AreGivenUpAndThenRefusedWhereTooManyAreUnanswered) {
    Service service;
    Client client;
    Caller caller(client);
    std::optional<InCallback> in_callback(std::in_place, service, caller, std::chrono::minutes(5));
    service.answerWith([](Command const &command) { return command.command; });
    testing::internal::CaptureStderr();
    // 65536 are kept track of. Those beyond take the place of the oldest, whose callbacks get the substitute; as many of
    // these may wait.
    constexpr int most = 2 * 65536;
    int taken = 0;
    while (taken <= most && caller.send(std::to_string(taken), "") == KORVO_CORE_STATUS_NO_ERROR) {
        ++taken;
    }
    EXPECT_EQ(taken, most);
    in_callback.reset();
    for (int number = 0; number < 65536; ++number) {
        auto const answer = caller.answers.take();
        ASSERT_TRUE(answer.has_value()) << number;
        ASSERT_EQ(answer->id, std::to_string(number));
        ASSERT_EQ(answer->response, substitute);
    }
    // There is room again.
    EXPECT_EQ(caller.send("last", "last"), KORVO_CORE_STATUS_NO_ERROR);
    client.close();
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        log.find(
            "more requests are unanswered than can be kept track of; the oldest were given up (1 so far)"),
        std::string::npos)
        << log;
    EXPECT_NE(log.find("callbacks for 65536 responses wait already"), std::string::npos) << log;
}

TEST(AsynchronousCalls, FromInsideCallbacksLeaveInTheOrderInWhichTheyWereMade) {
    Service service;
    Client client;
    Caller caller(client);
    std::atomic<int> calls{0};
    caller.at_response = [&](Caller::Answer const &) {
        int const call = ++calls;
        if (call <= 3) {
            EXPECT_EQ(caller.send("again " + std::to_string(call), "again"), KORVO_CORE_STATUS_NO_ERROR);
        }
    };
    for (char const *const id : {"1", "2", "3"}) {
        ASSERT_EQ(caller.send(id, "first"), KORVO_CORE_STATUS_NO_ERROR);
    }
    std::vector<Command> first(3);
    for (Command &command : first) {
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (Command const &command : first) {
        ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (char const *const id : {"again 1", "again 2", "again 3"}) {
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(command.request_id, id);
        ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (int number = 0; number < 6; ++number) {
        ASSERT_TRUE(caller.answers.take().has_value()) << number;
    }
}

TEST(AsynchronousCalls, OfManyThreadsWhileTheServiceDiesAgainAndAgainAreAllAnsweredOnce) {
    Client client;
    Caller caller(client);
    constexpr int threads = 4;
    std::atomic<bool> is_over{false};
    std::atomic<int> taken{0};
    std::vector<std::thread> senders;
    for (int thread = 0; thread < threads; ++thread) {
        senders.emplace_back([&, thread] {
            for (int number = 0; !is_over; ++number) {
                std::string const id = std::to_string(thread) + "." + std::to_string(number);
                if (caller.send(id, number % 2 == 0 ? "echo" : "silent") == KORVO_CORE_STATUS_NO_ERROR) {
                    ++taken;
                    // No more than some are unanswered at a time.
                    while (!is_over && static_cast<int>(caller.answers.count()) + 500 < taken) {
                        std::this_thread::yield();
                    }
                } else {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (int round = 0; round < 5; ++round) {
        ServiceProcess const process;
        EXPECT_TRUE(process.isReady());
        std::size_t const before = caller.answers.count();
        auto const end = std::chrono::steady_clock::now() + patience;
        while (caller.answers.count() < before + 100 && std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
    }
    is_over = true;
    for (std::thread &sender : senders) {
        sender.join();
    }
    std::map<std::string, int> answered;
    for (int number = 0; number < taken; ++number) {
        auto const answer = caller.answers.take();
        ASSERT_TRUE(answer.has_value()) << number << " of " << taken;
        EXPECT_EQ(++answered[answer->id], 1) << answer->id;
    }
    client.close();
    EXPECT_EQ(static_cast<int>(caller.answers.count()), taken.load());
    EXPECT_GE(taken.load(), 500);
}

namespace {

/// Takes as many commands and checks their identifiers: "0", "1" and so on.
void expectInOrder(Service &service, int count) {
    for (int number = 0; number < count; ++number) {
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR) << number;
        EXPECT_EQ(command.request_id, std::to_string(number));
    }
}

}  // namespace

TEST(AsynchronousCalls, LeaveInOrderTogetherWithSynchronousOnes) {
    Service service;
    Client client;
    Caller caller(client);
    constexpr int count = 300;
    for (int number = 0; number < count; ++number) {
        std::string const id = std::to_string(number);
        if (number % 7 != 6) {
            ASSERT_EQ(caller.send(id, "{}"), KORVO_CORE_STATUS_NO_ERROR);
        } else {
            ASSERT_EQ(korvo_core_private_command_send(client.handle(), "sample", "", id.c_str(), "{}", 2,
                                                      &caller, nullptr),
                      KORVO_CORE_STATUS_NO_ERROR);
        }
    }
    expectInOrder(service, count);
}

TEST(AsynchronousCalls, LeaveWhenTheHandleIsClosedAtOnce) {
    Service service;
    Client client;
    Caller caller(client);
    constexpr int count = 300;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(caller.send(std::to_string(number), "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    client.close();
    expectInOrder(service, count);
}

TEST(AsynchronousCalls, LeaveWhileACallbackTakesLong) {
    Service service;
    Client client;
    Caller caller(client);
    InCallback const in_callback(service, caller);
    constexpr int count = 20;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(caller.send(std::to_string(number), "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    expectInOrder(service, count);
}

TEST(AsynchronousCalls, LeaveAFullSocketWhileACallbackTakesLong) {
    Service service;
    Client client;
    Caller caller(client);
    InCallback const in_callback(service, caller);
    // More than a socket holds, while nobody reads.
    constexpr int count = 8;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(caller.send(std::to_string(number), std::string(512 * 1024, 'x')),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    expectInOrder(service, count);
}

TEST(AsynchronousCalls, FromInsideACallbackLeaveWhileTheNextOneTakesLong) {
    Service service;
    Client client;
    Caller caller(client);
    // More callbacks wait than commands would leave at once for.
    constexpr int count = 10;
    Gate all_wait;
    Gate go_on;
    caller.at_response = [&](Caller::Answer const &answer) {
        if (answer.id == "0") {
            EXPECT_TRUE(all_wait.wait());
        } else if (answer.id == "1") {
            EXPECT_EQ(caller.send("again", "{}"), KORVO_CORE_STATUS_NO_ERROR);
        } else if (answer.id == "2") {
            EXPECT_TRUE(go_on.wait());
        }
    };
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(caller.send(std::to_string(number), "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (int number = 0; number < count; ++number) {
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    // A synchronous call reads what came before its own response.
    ASSERT_EQ(
        korvo_core_private_command_send(client.handle(), "sample", "", "marker", "{}", 2, &caller, nullptr),
        KORVO_CORE_STATUS_NO_ERROR);
    Command marker;
    ASSERT_EQ(service.poll(marker), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(marker, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    char *response = nullptr;
    std::size_t length = 0;
    ASSERT_EQ(korvo_core_private_response_receive(client.handle(), 20000, "marker", &response, &length),
              KORVO_CORE_STATUS_NO_ERROR);
    std::free(response);
    all_wait.open();
    Command again;
    EXPECT_EQ(service.poll(again), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(again.request_id, "again");
    go_on.open();
    client.close();
}
