// SPDX-License-Identifier: Apache-2.0
// What all initiators of a service together can make it hold and write.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "development/raw_socket.h"
#include "messaging/addressing.h"
#include "messaging/bounds.h"
#include "messaging/frame.h"
#include "support/ends.h"

namespace frame = platform::frame;
namespace limits = platform::limits;

namespace {

std::string socketPath() {
    return std::string(std::getenv("KORVO_RUNTIME_DIR")) + "/" + platform::socketName("sample", "");
}

void expectAnAnswer(Client &client, char const *request_id) {
    ASSERT_EQ(client.send(request_id, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, request_id);
}

/// Answers commands that ask for it with a large text, and others with themselves.
struct Answering {
    void *messaging;
    std::string large;

    static void answer(char **source, char **request_id, char **command, void *context) {
        auto const &self = *static_cast<Answering *>(context);
        bool const is_large = std::string_view(*request_id).substr(0, 5) == "large";
        (void)korvo_core_ipc_target_response_send(self.messaging, *source, *request_id,
                                                  is_large ? self.large.c_str() : *command);
    }
};

std::size_t linesWith(std::string const &text, std::string const &part) {
    std::istringstream lines(text);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line);) {
        count += line.find(part) != std::string::npos ? std::size_t{1} : 0;
    }
    return count;
}

/// The numbers before this part, added up.
std::size_t sumBefore(std::string const &text, std::string const &part) {
    std::size_t sum = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        sum += std::stoul(text.substr(text.rfind(' ', at - 1) + 1));
    }
    return sum;
}

std::size_t secondsSince(std::chrono::steady_clock::time_point start) {
    return static_cast<std::size_t>(
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start).count());
}

}  // namespace

TEST(ServiceMemory, OfFramesWithoutAnEndIsBoundedAndTheGreediestGoes) {
    auto const start = std::chrono::steady_clock::now();
    testing::internal::CaptureStderr();
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client modest;
    expectAnAnswer(modest, "before");

    // All but the last bytes of the largest frame, from more initiators than the bound has room for.
    std::string whole;
    frame::append(whole, frame::Type::command, "id", std::string(limits::frame_payload - 10, 'x'));
    std::string const begun = whole.substr(0, whole.size() - 4096);
    constexpr std::size_t room = limits::service_bytes / limits::frame_payload;
    std::vector<RawSocket> peers;
    for (std::size_t n = 0; n < 2 * room; ++n) {
        peers.push_back(RawSocket::connect(socketPath()));
        ASSERT_TRUE(peers.back().isOpen());
        (void)peers.back().send(begun);
    }
    // Each that stays holds at least what it has sent.
    std::size_t connected = peers.size();
    for (int tries = 0; connected > room && tries < 2000; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        connected = static_cast<std::size_t>(
            std::count_if(peers.begin(), peers.end(), [](RawSocket const &peer) { return peer.send("x"); }));
    }
    EXPECT_LE(connected, room);
    EXPECT_GT(connected, 0U);
    expectAnAnswer(modest, "after");
    service.close();
    std::string const log = testing::internal::GetCapturedStderr();
    std::size_t const lines = linesWith(log, "all together make it hold");
    EXPECT_LE(lines, 2U + secondsSince(start));
    EXPECT_GE(lines + sumBefore(log, " more initiators were disconnected"), peers.size() - room) << log;
}

TEST(ServiceMemory, OfResponsesThatNobodyReadsIsBoundedAndOthersAreServed) {
    Service service;
    std::string const large(limits::frame_payload / 2, 'x');
    // Whether an answer is taken is not asked: it is not, of one who has just been disconnected.
    Answering answering{service.handle(), large};
    ASSERT_EQ(korvo_core_ipc_target_command_receive_callback(service.handle(), Answering::answer, &answering),
              KORVO_CORE_STATUS_NO_ERROR);
    Client modest;
    std::string commands;
    for (int n = 0; n < 10; ++n) {
        frame::append(commands, frame::Type::command, "large" + std::to_string(n), "{}");
    }
    // Each may hold back 5 MiB by itself; all together more than the bound.
    std::vector<RawSocket> peers;
    for (int n = 0; n < 40; ++n) {
        peers.push_back(RawSocket::connect(socketPath()));
        ASSERT_TRUE(peers.back().send(commands));
    }
    std::size_t connected = peers.size();
    constexpr std::size_t room = limits::service_bytes / (4 * limits::frame_payload);
    for (int tries = 0; connected > room && tries < 2000; ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::string subscription;
        frame::append(subscription, frame::Type::unsubscribe);
        connected = static_cast<std::size_t>(
            std::count_if(peers.begin(), peers.end(),
                          [&subscription](RawSocket const &peer) { return peer.send(subscription); }));
    }
    EXPECT_LE(connected, room);
    expectAnAnswer(modest, "after");
    service.close();
}

TEST(ServiceLog, OfAFloodOfBrokenFramesIsShortAndHasTheirNumber) {
    constexpr std::size_t broken = 300;
    auto const start = std::chrono::steady_clock::now();
    testing::internal::CaptureStderr();
    {
        Service service;
        service.answerWith([](Command const &command) { return command.command; });
        for (std::size_t n = 0; n < broken; ++n) {
            RawSocket const peer = RawSocket::connect(socketPath());
            ASSERT_TRUE(peer.send("GET / HTTP/1.1\r\n\r\n"));
            ASSERT_TRUE(peer.ends());
        }
    }
    std::string const log = testing::internal::GetCapturedStderr();
    std::size_t const lines = linesWith(log, "sent a broken frame:");
    EXPECT_GE(lines, 1U);
    EXPECT_LE(lines, 2U + secondsSince(start));
    EXPECT_EQ(lines + sumBefore(log, " more initiators sent broken frames"), broken) << log;
}
