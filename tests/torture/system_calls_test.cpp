// SPDX-License-Identifier: Apache-2.0
// The initiator's end of the messaging, while each of its system calls fails once.
#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "support/every_call.h"
#include "support/initiator.h"
#include "support/rounds.h"

namespace torture {

namespace {

constexpr auto gone = KORVO_CORE_STATUS_DISABLED_TARGET;

std::vector<CallThatFails> const calls = {
    {"socket", {EMFILE, ENOBUFS, ENOMEM}},
    {"connect", {EAGAIN, ECONNREFUSED, EACCES, EINTR}},
    {"send", {one_byte, EPIPE, EAGAIN, EINTR, ECONNRESET, ENOBUFS}},
    {"recv", {one_byte, ECONNRESET, EAGAIN, EINTR, ENOMEM}},
    {"poll", {EINTR, ENOMEM}},
    {"epoll_wait", {EINTR}},
    {"epoll_ctl", {ENOMEM, ENOSPC}},
    {"epoll_create1", {EMFILE, ENOMEM}},
    {"eventfd", {EMFILE, ENOMEM}},
    {"inotify_init1", {EMFILE}},
    {"inotify_add_watch", {ENOSPC, EACCES}},
    {"mkdir", {EACCES, ENOSPC}},
#if __WORDSIZE == 64
    {"getsockopt", {ENOBUFS}},
    {"setsockopt", {ENOMEM}},
    {"fstat", {EIO}},
#endif
};

class MessagingWhoseSystemCallsFail : public ::testing::TestWithParam<CallThatFails> {
  protected:
    void SetUp() override {
        openLog();
        peer_.emplace();
    }

    /// The whole life of a handle.
    void live(FailingCall &failing) {
        Initiator initiator;
        korvo_core_status const opened = initiator.open();
        korvo_core_status const first = opened == done ? initiator.exchange("first") : opened;
        korvo_core_status const heard = opened == done ? initiator.subscribe() : opened;
        korvo_core_status const called = opened == done ? initiator.registerForEvents() : opened;
        korvo_core_status const asked = opened == done ? initiator.exchange("asked") : opened;
        korvo_core_status registered = opened == done ? initiator.registerForResponses() : opened;
        korvo_core_status sent = registered == done ? initiator.sendAsynchronously("sent") : registered;
        if (sent == done) {
            EXPECT_TRUE(initiator.waitForResponse("sent")) << "it was taken and is never called back";
            std::string const response = initiator.responses("sent").front();
            EXPECT_TRUE(response == command || (failing.hasFailed() && response == substitute)) << response;
        }
        failing.stop();
        for (korvo_core_status const status : {opened, first, heard, called, asked, registered, sent}) {
            EXPECT_TRUE(status == done || (failing.hasFailed() && (isShortage(status) || status == gone)))
                << status;
        }
        if (opened == done) {
            expectUsable(initiator);
            // Who was told that it is subscribed gets events; who was told otherwise asks again.
            if (heard != done) {
                EXPECT_EQ(initiator.subscribe(), done);
            }
            expectEvents(initiator, *peer_);
        }
    }

    std::optional<Peer> peer_;
};

INSTANTIATE_TEST_SUITE_P(, MessagingWhoseSystemCallsFail, ::testing::ValuesIn(calls),
                         [](auto const &tested) { return tested.param.function; });

TEST_P(MessagingWhoseSystemCallsFail, EndsEachCallInAStatusAndWorksOn) {
    std::size_t const failures = failEveryCall(GetParam(), [&](FailingCall &failing) { live(failing); });
    if (std::string(GetParam().function) != "poll") {
        EXPECT_GT(failures, 0U) << "it is never called";
    }
}

}  // namespace

}  // namespace torture
