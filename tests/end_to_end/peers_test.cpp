// SPDX-License-Identifier: Apache-2.0
// Peers that do not keep to the rules: clients that send garbage or die, and services that answer nonsense.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "support/automation.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

using namespace std::string_literals;

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;
constexpr auto failed = KORVO_CORE_STATUS_IPC_FAILED;

/// A connection to the one service that runs, without any of our libraries.
class RawClient {
  public:
    RawClient() : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::string const path = Service::socketPath();
        EXPECT_LT(path.size(), sizeof address.sun_path);
        std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
        EXPECT_EQ(connect(socket_.get(), reinterpret_cast<sockaddr *>(&address), sizeof address), 0)
            << std::strerror(errno) << ": " << path;
    }

    void send(std::string const &bytes) const {
        // The service may close in the middle of it, which is its good right.
        (void)::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    /// True when the service closes the connection, whatever it sends before.
    bool isClosedByService() const {
        for (;;) {
            pollfd watched{socket_.get(), POLLIN, 0};
            if (poll(&watched, 1, static_cast<int>(patience.count())) != 1) {
                return false;
            }
            char buffer[4096];
            if (recv(socket_.get(), buffer, sizeof buffer, 0) <= 0) {
                return true;
            }
        }
    }

    void close() { socket_.reset(); }

  private:
    Descriptor socket_;
};

std::string lengthBytes(unsigned int length) {
    std::string bytes;
    for (unsigned int n = 0; n < 4; ++n) {
        bytes += static_cast<char>(length >> 8 * n & 0xffU);
    }
    return bytes;
}

std::string header(char type, unsigned int length) {
    return "KV\x01"s + type + lengthBytes(length);
}

constexpr char command_type = 1;

std::string commandFrame(std::string const &request_id, std::string const &command) {
    std::string const payload = lengthBytes(static_cast<unsigned int>(request_id.size())) + request_id +
                                lengthBytes(static_cast<unsigned int>(command.size())) + command;
    return header(command_type, static_cast<unsigned int>(payload.size())) + payload;
}

class ServiceWithRawClients : public ::testing::Test {
  protected:
    /// Another client is answered as ever.
    void expectServed() {
        EXPECT_EQ(operation("get_actions").send(other_.handle(), nullptr, {}).status, done);
        EXPECT_TRUE(service_.running());
    }

    Service service_;
    Client other_;
};

TEST_F(ServiceWithRawClients, ClosesAConnectionThatSendsGarbage) {
    for (std::string const &garbage :
         {std::string(100, 'x'), std::string(100, '\0'), "GET / HTTP/1.1\r\n\r\n"s, "KV\x02\x01\0\0\0\0"s,
          "KV\x01\x09\0\0\0\0"s, header(command_type, 0xffffffffU), header(command_type, 0x80000000U),
          header(command_type, 1024 * 1024 + 1),
          // Texts that are longer than their frame, or leave a rest.
          header(command_type, 8) + lengthBytes(0xffffffffU) + lengthBytes(0),
          header(command_type, 8) + lengthBytes(4) + lengthBytes(0),
          header(command_type, 9) + std::string(9, '\0'), header(command_type, 3) + "abc",
          header(command_type, 0)}) {
        RawClient const client;
        client.send(garbage);
        EXPECT_TRUE(client.isClosedByService()) << ::testing::PrintToString(garbage);
        expectServed();
    }
}

TEST_F(ServiceWithRawClients, WaitsForTheRestOfAFrameWithoutHoldingUpOthers) {
    std::vector<RawClient> clients(20);
    std::string const frame = commandFrame("1", R"({"command":"Get_actions"})");
    for (std::size_t n = 0; n < clients.size(); ++n) {
        clients[n].send(frame.substr(0, n * frame.size() / clients.size()));
    }
    expectServed();
    for (RawClient &client : clients) {
        client.close();
    }
    expectServed();
}

TEST_F(ServiceWithRawClients, AnswersCommandsThatAreNoneWithoutFailing) {
    RawClient const client;
    for (std::string const &command :
         {""s, "{"s, "[]"s, "null"s, R"({"command":7})"s, R"({"command":"No_such_method"})"s,
          R"({"command":"Create_wiper_action"})"s, R"({"command":"Create_wiper_action","action_name":7})"s,
          R"({"command":"Get_action_type","action_id":-1})"s,
          R"({"command":"Get_action_type","action_id":1e300})"s, "{\"command\":\"\xff\"}"s,
          std::string(100'000, '['), "{\"a\0b\":1}"s}) {
        client.send(commandFrame("id", command));
    }
    client.send(commandFrame("", R"({"command":"Get_actions"})"));
    client.send(commandFrame(std::string(100'000, 'i'), R"({"command":"Get_actions"})"));
    expectServed();
}

TEST_F(ServiceWithRawClients, OutlivesClientsThatNeverReadTheirAnswers) {
    RawClient client;
    ASSERT_EQ(
        operation("create_wiper_action").send(other_.handle(), nullptr, {std::string(60'000, 'w')}).status,
        done);
    std::string commands;
    for (int n = 0; n < 50; ++n) {
        commands += commandFrame("1", R"({"command":"Get_wiper_action","action_id":1})");
    }
    // More than any socket holds and more than the service keeps for one client; each piece is taken or refused.
    auto sending = std::async(std::launch::async, [&] {
        for (int n = 0; n < 20; ++n) {
            client.send(commands);
        }
    });
    for (int n = 0; n < 20; ++n) {
        expectServed();
    }
    sending.wait();
    expectServed();
}

TEST_F(ServiceWithRawClients, RunsOutOfNothingWhenConnectionsComeAndGo) {
    expectServed();
    Resources const before = resourcesOf(service_.pid());
    for (int n = 0; n < 1000; ++n) {
        RawClient const client;
        if (n % 2 == 0) {
            client.send(header(command_type, 100));
        }
    }
    // A newcomer is behind all of them, so that its answer comes when the service has seen the last of them.
    Client newcomer;
    EXPECT_EQ(operation("get_actions").send(newcomer.handle(), nullptr, {}).status, done);
    newcomer.close();
    auto const limit = Clock::now() + patience;
    while (resourcesOf(service_.pid()).descriptors > before.descriptors && Clock::now() < limit) {
        expectServed();
    }
    EXPECT_EQ(resourcesOf(service_.pid()).descriptors, before.descriptors);
    EXPECT_EQ(resourcesOf(service_.pid()).threads, before.threads);
}

TEST(KilledClient, LeavesTheServiceWorking) {
    Service service({"--delay", "Get_triggers=200"});
    Client other;
    for (int n = 0; n < 3; ++n) {
        Child client({KORVO_CALLING_CLIENT_PROGRAM, {"call"}, {}, true});
        ASSERT_TRUE(client.out().waitFor("calling")) << client.errors().text();
        client.signal(SIGKILL);
        ASSERT_TRUE(client.wait().has_value());
    }
    // Waits as long as the dead clients' answers are held back, so that they have become due as well.
    EXPECT_EQ(operation("get_triggers").send(other.handle(), nullptr, {}).status, done);
    EXPECT_EQ(operation("get_actions").send(other.handle(), nullptr, {}).status, done);
    EXPECT_TRUE(service.running());
}

TEST(StoppedClient, KeepsNoEventFromOthers) {
    EventRecorder recorder;
    Service const service;
    Child stopped({KORVO_CALLING_CLIENT_PROGRAM, {"subscribe"}, {}, true});
    ASSERT_TRUE(stopped.out().waitFor("subscribed")) << stopped.errors().text();
    stopped.signal(SIGSTOP);

    Client client(Events::subscribed);
    recorder.registerOn(client);
    // Far more than the service keeps for a client that does not read. The one that reads is waited for, since the same
    // bound holds for it.
    Automation const automation(client, std::string(30'000, 'e'));
    constexpr std::size_t events = 100;
    for (std::size_t n = 0; n < events; ++n) {
        automation.fire(client);
        ASSERT_TRUE(recorder.waitForCount(n + 1)) << recorder.count();
    }
    EXPECT_TRUE(service.waitForLog("does not read its events; dropped"));
    stopped.signal(SIGCONT);
    EXPECT_TRUE(stopped.running());
    automation.fire(client);
    EXPECT_TRUE(recorder.waitForCount(events + 1));
}

/// A service that answers in an odd way; see programs/odd_service.cpp.
class OddService {
  public:
    explicit OddService(std::string const &mode) : child_({KORVO_ODD_SERVICE_PROGRAM, {mode}, {}, true}) {
        EXPECT_TRUE(child_.out().waitFor("ready")) << child_.errors().text();
    }

    bool took(std::string const &method) const { return child_.out().waitFor("took " + method); }

    void kill() {
        child_.signal(SIGKILL);
        EXPECT_TRUE(child_.wait().has_value());
    }

  private:
    Child child_;
};

Answer getType(Client const &client, int timeout = long_timeout_ms) {
    return operation("get_action_type").sendWithTimeout(client.handle(), nullptr, timeout, {1U});
}

/// The same handle, with a good service in the place of the odd one.
void expectWorksAgain(Client const &client) {
    Service const service;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
}

class NonsenseAnswer : public ::testing::TestWithParam<char const *> {};

INSTANTIATE_TEST_SUITE_P(, NonsenseAnswer,
                         ::testing::Values("half", "empty", "no-json", "array", "scalar", "trailing",
                                           "too-deep", "bad-utf-8", "no-status", "text-status"),
                         [](auto const &tested) {
                             std::string name = tested.param;
                             for (char &letter : name) {
                                 letter = letter == '-' ? '_' : letter;
                             }
                             return name;
                         });

TEST_P(NonsenseAnswer, GivesAStatusAndALogLineAndHarmsNothing) {
    static PendingAnswer pending[16];
    static std::size_t used = 0;
    OddService service(GetParam());
    Client client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    Answer answer;
    auto const taken = timeOf([&] { answer = getType(client); });
    EXPECT_EQ(answer.status, failed);
    EXPECT_LT(taken, milliseconds(2000)) << "broken answers are answers: nobody waits for the time-out";
    EXPECT_NE(ErrorOutput::ofThisProgram().since(mark), "") << "no log line";

    auto const async_mark = ErrorOutput::ofThisProgram().mark();
    ASSERT_LT(used, std::size(pending));
    PendingAnswer &context = pending[used++];
    EXPECT_EQ(operation("get_action_type").sendAsync(client.handle(), nullptr, {1U}, context), done);
    EXPECT_TRUE(ErrorOutput::ofThisProgram().waitFor("\n", async_mark)) << "no log line";
    EXPECT_EQ(context.count(), 0U);
    service.kill();
    expectWorksAgain(client);
}

TEST(AnswerUnderAnotherIdentifier, IsNotTakenForTheAnswer) {
    OddService service("wrong-id");
    Client client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    Answer answer;
    auto const taken = timeOf([&] { answer = getType(client, 200); });
    EXPECT_EQ(answer.status, failed);
    EXPECT_GE(taken.count(), 150);
    EXPECT_LT(taken.count(), 2000);
    EXPECT_NE(ErrorOutput::ofThisProgram().since(mark).find("answered a request that is unknown"),
              std::string::npos);
    service.kill();
    expectWorksAgain(client);
}

TEST(AnswerOfAnotherMethod, IsNotTakenForTheAnswer) {
    OddService service("other-method");
    Client client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    EXPECT_EQ(getType(client, 500).status, failed);
    EXPECT_NE(ErrorOutput::ofThisProgram().since(mark), "") << "no log line";
    service.kill();
    expectWorksAgain(client);
}

TEST(SecondAnswer, ReachesACallbackAgainAndNoOtherCall) {
    static PendingAnswer pending;
    OddService service("twice");
    Client client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    for (int n = 0; n < 5; ++n) {
        Answer const answer = getType(client);
        EXPECT_EQ(answer.status, done);
        EXPECT_EQ(answer.results, (Values{6U}));
    }
    EXPECT_TRUE(ErrorOutput::ofThisProgram().waitFor(
        "answered a request that is unknown, or known no longer; dropped", mark));
    ASSERT_EQ(operation("get_action_type").sendAsync(client.handle(), nullptr, {1U}, pending), done);
    auto const answer = pending.wait();
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->results, (Values{6U}));
    service.kill();
    expectWorksAgain(client);
}

TEST(UnknownStatus, IsPassedThrough) {
    OddService const service("status-77");
    Client client;
    for (Way const way : all_ways) {
        EXPECT_EQ(
            static_cast<unsigned int>(call(operation("get_action_type"), way, client, nullptr, {1U}).status),
            77U)
            << nameOf(way);
    }
}

TEST(NonsenseEvents, AreLoggedAndTheNextGoodOneArrives) {
    EventRecorder recorder;
    OddService const service("events");
    Client client(Events::subscribed);
    recorder.registerOn(client);
    auto const mark = ErrorOutput::ofThisProgram().mark();
    EXPECT_EQ(getType(client).status, done);
    ASSERT_TRUE(recorder.waitForCount(1));
    EXPECT_EQ(recorder.events()[0].action_name, "good");
    EXPECT_EQ(recorder.count(), 1U);
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_EQ(count(log, "Threw an exception in function action_engineAction_completed"), 3U) << log;
}

TEST(ServiceThatDiesInTheMiddle, EndsTheCallThatItTook) {
    OddService service("silent");
    Client client;
    auto answer = std::async(std::launch::async, [&] { return getType(client); });
    ASSERT_TRUE(service.took("Get_action_type"));
    service.kill();
    auto const taken = timeOf([&] { EXPECT_EQ(answer.get().status, failed); });
    EXPECT_LT(taken, at_once);
    expectWorksAgain(client);
}

}  // namespace

}  // namespace end_to_end
