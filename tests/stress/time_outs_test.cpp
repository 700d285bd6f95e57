// SPDX-License-Identifier: Apache-2.0
// How much longer than its time-out a call takes, with services that are stopped, silent, slow by the byte, or full.
// KORVO_STRESS_TIME_OUTS says how many calls of each; the worst is printed. The limit is wide, since tests share the machine:
// what it is there for took seconds.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "chosen_number.h"
#include "korvo_core_private.h"
#include "messaging/addressing.h"
#include "messaging/frame.h"
#include "platform_contract/development/child_process.h"
#include "platform_contract/development/raw_socket.h"
#include "platform_contract/support/ends.h"

namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr int time_out = 30;
constexpr Milliseconds most_overshoot{1500};

/// Makes calls as a client object does, and notes how long they take.
class Calls {
  public:
    explicit Calls(char const *service) : service_(service) {}

    /// Sends `command` and waits for the response, which must not come.
    void call(std::string const &command) {
        std::string const id = "call " + std::to_string(++made_);
        auto const start = std::chrono::steady_clock::now();
        korvo_core_status status = korvo_core_private_command_send(
            client_.handle(), service_, "", id.c_str(), command.c_str(), command.size(), this, nullptr);
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            ++taken_;
            char *response = nullptr;
            std::size_t length = 0;
            status = korvo_core_private_response_receive(client_.handle(), time_out, id.c_str(), &response,
                                                         &length);
        }
        auto const elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(status, KORVO_CORE_STATUS_IPC_FAILED);
        worst_ = std::max(worst_, std::chrono::duration_cast<Milliseconds>(elapsed) - Milliseconds(time_out));
    }

    unsigned int taken() const { return taken_; }

    void tell(char const *kind) const {
        std::printf("[  NOTE    ] %u calls of %d ms, service %s: the worst took %lld ms more\n", made_,
                    time_out, kind, static_cast<long long>(worst_.count()));
        EXPECT_LT(worst_, most_overshoot);
    }

  private:
    char const *service_;
    Client client_;
    unsigned int made_ = 0;
    unsigned int taken_ = 0;
    Milliseconds worst_{-time_out};
};

unsigned int callsOfEach() {
    return chosenNumber("KORVO_STRESS_TIME_OUTS", 10);
}

}  // namespace

TEST(TimeOuts, OfAServiceThatIsStopped) {
    ServiceProcess const process;
    ASSERT_TRUE(process.isReady());
    process.signal(SIGSTOP);
    Calls calls("sample");
    for (unsigned int call = 0; call < callsOfEach(); ++call) {
        calls.call("echo");
    }
    calls.tell("stopped");
}

TEST(TimeOuts, OfAServiceThatIsSilent) {
    ServiceProcess const process;
    ASSERT_TRUE(process.isReady());
    Calls calls("sample");
    for (unsigned int call = 0; call < callsOfEach(); ++call) {
        calls.call("silent");
    }
    EXPECT_EQ(calls.taken(), callsOfEach());
    calls.tell("silent");
}

TEST(TimeOuts, OfAServiceWhoseSocketIsFull) {
    ServiceProcess const process;
    ASSERT_TRUE(process.isReady());
    process.signal(SIGSTOP);
    Calls calls("sample");
    // The socket takes less than one of these; after eight the connection takes no more, and calls fail at once.
    std::string const large(1000 * 1000, 'x');
    for (unsigned int call = 0; call < callsOfEach(); ++call) {
        calls.call(large);
    }
    EXPECT_GE(calls.taken(), 2U);
    calls.tell("full");
}

TEST(TimeOuts, OfAServiceThatSendsByteByByte) {
    std::string const path =
        platform::RuntimeFolder::fromEnvironment().path() + "/" + platform::socketName("slow", "");
    ChildProcess const process([&path](std::function<void()> const &ready) {
        RawSocket const listener = RawSocket::listen(path);
        ready();
        RawSocket const peer = listener.accept();
        // Responses to nobody, one after the other, for ever.
        std::string response;
        platform::frame::append(response, platform::frame::Type::response, "nobody", std::string(2000, 'x'));
        for (std::size_t place = 0; peer.send(response.substr(place, 1));
             place = (place + 1) % response.size()) {
            (void)poll(nullptr, 0, 1);
        }
    });
    ASSERT_TRUE(process.isReady());
    Calls calls("slow");
    for (unsigned int call = 0; call < callsOfEach(); ++call) {
        calls.call("{}");
    }
    EXPECT_EQ(calls.taken(), callsOfEach());
    calls.tell("slow by the byte");
    (void)unlink(path.c_str());
}
