// SPDX-License-Identifier: Apache-2.0
// The service's end of the messaging, while each of its system calls fails once. Its clients' calls do not fail.
#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/every_call.h"
#include "support/initiator.h"
#include "support/rounds.h"

namespace torture {

namespace {

std::vector<CallThatFails> const calls = {
    {"socket", {EMFILE, ENFILE, ENOBUFS, ENOMEM}},
    {"bind", {EADDRINUSE, EACCES, ENOSPC, ENOMEM}},
    {"listen", {EADDRINUSE, ENOBUFS}},
    {"accept4", {EMFILE, ENFILE, ECONNABORTED, EAGAIN, EINTR, ENOBUFS, ENOMEM}},
    {"recv", {one_byte, ECONNRESET, EAGAIN, EINTR, ENOMEM}},
    {"send", {one_byte, EAGAIN, EPIPE, EINTR, ECONNRESET, ENOBUFS}},
    {"epoll_create1", {EMFILE, ENFILE, ENOMEM}},
    {"epoll_ctl", {ENOMEM, ENOSPC}},
    {"epoll_wait", {EINTR}},
    {"eventfd", {EMFILE, ENFILE, ENOMEM}},
    {"mkdir", {EACCES, ENOSPC, EROFS}},
    {"flock", {ENOLCK, EWOULDBLOCK, EINTR}},
    {"renameat", {ENOSPC, EACCES}},
    {"unlinkat", {EACCES, EROFS}},
    {"shutdown", {ENOTCONN}},
#if __WORDSIZE == 64
    {"openat", {EMFILE, ENOSPC, EACCES}},
    {"getsockopt", {ENOBUFS}},
    {"fstat", {EIO, ENOMEM}},
    {"fstatat", {EIO, ENOENT}},
#endif
};

class ServiceWhoseSystemCallsFail : public ::testing::TestWithParam<CallThatFails> {
  protected:
    void SetUp() override { openLog(); }

    /// The whole life of a service, with clients that come and go.
    void live(FailingCall &failing) {
        std::optional<Peer> service;
        try {
            service.emplace(Peer::Memory::fails);
        } catch (std::runtime_error const &) {
            EXPECT_TRUE(failing.hasFailed());
            failing.stop();
            service.emplace(Peer::Memory::fails);
        }
        std::optional<live_blocks::Unnoticed> safely(std::in_place);
        Initiator known;
        Initiator listener;
        known.openOrDie();
        listener.openOrDie();
        EXPECT_EQ(known.registerForResponses(), done);
        EXPECT_EQ(listener.registerForEvents(), done);
        expectTold(failing, known, "first", command);
        EXPECT_EQ(listener.subscribe(), done);
        // More than the socket takes at once.
        expectTold(failing, known, "large", std::string(900'000, 'x'));
        {
            Initiator comes;
            comes.openOrDie();
            EXPECT_EQ(comes.registerForResponses(), done);
            expectTold(failing, comes, "of one that comes", command);
            safely.reset();
            EXPECT_EQ(service->publish("during"), done);
            safely.emplace();
            expectTold(failing, comes, "of one that leaves", command);
        }
        expectTold(failing, known, "last", command);
        expectEvents(listener, *service);
        expectRest();
        failing.stop();
        expectUsable(known);
        {
            Initiator next;
            next.openOrDie();
            expectUsable(next);
        }
        known.close();
        listener.close();
        safely.reset();
        service->close();
    }

    /// A command that was taken is answered, or its caller told that it is lost.
    static void expectTold(FailingCall &failing, Initiator &client, char const *request_id,
                           std::string const &text) {
        korvo_core_status const sent = client.sendAsynchronously(request_id, text);
        if (sent != done) {
            EXPECT_TRUE(failing.hasFailed() && sent == lost) << sent;
            return;
        }
        EXPECT_TRUE(client.waitForResponse(request_id))
            << request_id << " was sent, and nobody tells what became of it";
        for (std::string const &response : client.responses(request_id)) {
            EXPECT_TRUE(response == text || (failing.hasFailed() && response == substitute))
                << request_id << ": " << response.substr(0, 100);
        }
    }

    /// With nothing to do the service waits, and does not look again and again.
    static void expectRest() {
        std::size_t const before = FailingCall::waits();
        std::this_thread::sleep_for(milliseconds(20));
        EXPECT_LT(FailingCall::waits() - before, 200U) << "its thread does not come to rest";
    }
};

INSTANTIATE_TEST_SUITE_P(, ServiceWhoseSystemCallsFail, ::testing::ValuesIn(calls),
                         [](auto const &tested) { return tested.param.function; });

TEST_P(ServiceWhoseSystemCallsFail, TellsEachCallerAndServesOn) {
    EXPECT_GT(failEveryCall(GetParam(), [&](FailingCall &failing) { live(failing); }), 0U)
        << "it is never called";
}

}  // namespace

}  // namespace torture
