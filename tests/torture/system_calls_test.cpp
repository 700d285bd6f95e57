// SPDX-License-Identifier: Apache-2.0
// The initiator's end of the messaging, while each of its system calls fails once.
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform_contract/development/raw_socket.h"
#include "support/every_call.h"
#include "support/initiator.h"
#include "support/rounds.h"
#include "support/workspace.h"

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
    {"pthread_create", {EAGAIN}},
#if __WORDSIZE == 64
    {"getsockopt", {ENOBUFS}},
    {"setsockopt", {ENOMEM}},
    {"fstat", {EIO}},
#endif
};

/// A target of the peer's service that takes connections and reads nothing.
class StalledService {
  public:
    explicit StalledService(char const *target)
        : path_(pathOf(target)), listener_(RawSocket::listen(path_)) {}
    ~StalledService() { (void)std::filesystem::remove(path_); }
    StalledService(StalledService const &) = delete;
    StalledService &operator=(StalledService const &) = delete;

  private:
    static std::set<std::filesystem::path> sockets() {
        std::filesystem::directory_iterator const all(end_to_end::Workspace::ofThisProgram().runtimeFolder());
        std::set<std::filesystem::path> found;
        for (auto const &entry : all) {
            if (entry.is_socket()) {
                found.insert(entry.path());
            }
        }
        return found;
    }
    /// Where a service with this target listens, as one that does so for a moment shows.
    static std::string pathOf(char const *target) {
        std::set<std::filesystem::path> const others = sockets();
        void *handle = nullptr;
        EXPECT_EQ(korvo_core_ipc_target_init(nullptr, Peer::service, target, "torture", &handle), done);
        std::string path;
        for (std::filesystem::path const &socket : sockets()) {
            if (others.count(socket) == 0) {
                path = socket;
            }
        }
        EXPECT_EQ(korvo_core_ipc_deinit(handle), done);
        return path;
    }

    std::string const path_;
    RawSocket listener_;
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
            expectStatus(failing, status);
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

    /// A command, where it goes, and what became of it.
    struct Sent {
        std::string request_id;
        std::string text;
        char const *target;
        std::optional<korvo_core_status> status;
    };

    static void send(Initiator &initiator, std::vector<Sent> &commands) {
        if (initiator.open() == done && initiator.registerForResponses() == done) {
            for (Sent &one : commands) {
                one.status = initiator.sendAsynchronously(one.request_id.c_str(), one.text, one.target);
            }
        }
    }
    /// With the connections lost: each that was taken is called back once, and the handle works on.
    static void expectEnds(FailingCall const &failing, Initiator &initiator,
                           std::vector<Sent> const &commands) {
        for (Sent const &one : commands) {
            expectStatus(failing, one.status.value_or(lost));
            if (one.status == done) {
                EXPECT_TRUE(initiator.waitForResponse(one.request_id.c_str()))
                    << one.request_id << " was taken and is never called back";
            }
        }
    }
    static void expectEndedOnce(Initiator &initiator, std::vector<Sent> const &commands) {
        if (initiator.handle() != nullptr) {
            expectUsable(initiator);
        }
        for (Sent const &one : commands) {
            EXPECT_EQ(initiator.responses(one.request_id.c_str()),
                      one.status == done ? std::vector<std::string>{substitute} : std::vector<std::string>{})
                << one.request_id;
        }
    }

    /// One sends more than a socket takes that nobody reads, another so much at once that some of it is left to its writer.
    void sendMuch(FailingCall &failing) {
        constexpr char const *stalled_target = "stalled";
        std::optional<live_blocks::Unnoticed> safely(std::in_place);
        std::string const large(900'000, 'x');
        std::vector<Sent> large_ones{{"large", large, stalled_target, {}},
                                     {"behind it", large, stalled_target, {}}};
        std::vector<Sent> small_ones;
        for (char const *const request_id : {"one", "two", "three", "four"}) {
            small_ones.push_back({request_id, command, "", {}});
        }
        std::optional<StalledService> stalled(std::in_place, stalled_target);
        peer_->keepSilent(true);
        Initiator full;
        Initiator busy;
        safely.reset();

        send(full, large_ones);
        send(busy, small_ones);

        safely.emplace();
        stalled.reset();
        peer_->close();
        expectEnds(failing, full, large_ones);
        expectEnds(failing, busy, small_ones);
        peer_->keepSilent(false);
        peer_->open();
        failing.stop();
        expectEndedOnce(full, large_ones);
        expectEndedOnce(busy, small_ones);
        safely.reset();
    }

    /// Two subscribe before there is a service: one whose callbacks look for it, and one that meets it by a command.
    void subscribeEarly(FailingCall &failing) {
        {
            live_blocks::Unnoticed const unnoticed;
            peer_->close();
        }
        Initiator waiting;
        korvo_core_status const waiting_opened = waiting.open();
        korvo_core_status const called =
            waiting_opened == done ? waiting.registerForEvents() : waiting_opened;
        korvo_core_status const waits = waiting_opened == done ? waiting.subscribe() : waiting_opened;
        Initiator asking;
        korvo_core_status const asking_opened = asking.open();
        korvo_core_status const heard = asking_opened == done ? asking.subscribe() : asking_opened;
        {
            live_blocks::Unnoticed const unnoticed;
            peer_->open();
        }
        korvo_core_status const asked = asking_opened == done ? asking.exchange("asked") : asking_opened;
        if (called == done && waits == done) {
            expectToFind(failing, waiting);
        }
        failing.stop();
        for (korvo_core_status const status : {waiting_opened, called, waits, asking_opened, heard, asked}) {
            expectStatus(failing, status);
        }
        if (heard == done) {
            expectToFind(failing, asking);
        }
        for (Initiator *const initiator : {&waiting, &asking}) {
            if (initiator->handle() != nullptr) {
                expectUsable(*initiator);
            }
        }
    }

    /// The folder of the sockets is removed while one waits for a service there.
    void loseTheFolder(FailingCall &failing) {
        auto const folder = end_to_end::Workspace::ofThisProgram().runtimeFolder();
        {
            live_blocks::Unnoticed const unnoticed;
            peer_->close();
        }
        Initiator waiting;
        korvo_core_status const opened = waiting.open();
        korvo_core_status const called = opened == done ? waiting.registerForEvents() : opened;
        korvo_core_status const waits = opened == done ? waiting.subscribe() : opened;
        {
            live_blocks::Unnoticed const unnoticed;
            std::filesystem::remove_all(folder);
            // Whoever waits makes it again, unless that fails.
            (void)processes::becomesTrue([&] { return std::filesystem::exists(folder); }, milliseconds(200));
            peer_->open();
        }
        if (called == done && waits == done) {
            expectToFind(failing, waiting);
        }
        failing.stop();
        for (korvo_core_status const status : {opened, called, waits}) {
            expectStatus(failing, status);
        }
        if (opened == done) {
            expectUsable(waiting);
        }
        if (waits == done) {
            expectToFindLaterServices(waiting);
        }
    }

    /// A refused connection says that nobody listens there any more: then only who starts anew is noticed.
    void expectToFind(FailingCall const &failing, Initiator &initiator) {
        constexpr milliseconds briefly{200};
        if (failing.error() == ECONNREFUSED && !eventsCome(initiator, *peer_, briefly)) {
            live_blocks::Unnoticed const unnoticed;
            peer_->close();
            peer_->open();
        }
        expectEvents(initiator, *peer_);
    }

    static void expectStatus(FailingCall const &failing, korvo_core_status status) {
        EXPECT_TRUE(status == done || (failing.hasFailed() && (isShortage(status) || status == gone)))
            << status;
    }

    /// Each of its calls has failed once, but for those that this work never makes.
    template <typename Work>
    static void failEvery(std::set<std::string> const &never_made, Work const &work) {
        EXPECT_EQ(failEveryCall(GetParam(), work) == 0, never_made.count(GetParam().function) != 0)
            << "is it made?";
    }

    std::optional<Peer> peer_;
};

INSTANTIATE_TEST_SUITE_P(, MessagingWhoseSystemCallsFail, ::testing::ValuesIn(calls),
                         [](auto const &tested) { return tested.param.function; });

TEST_P(MessagingWhoseSystemCallsFail, EndsEachCallInAStatusAndWorksOn) {
    failEvery({"poll"}, [&](FailingCall &failing) { live(failing); });
}

TEST_P(MessagingWhoseSystemCallsFail, EndsWhatIsLeftToItsWriterOnce) {
    failEvery({"poll", "inotify_init1", "inotify_add_watch", "setsockopt"},
              [&](FailingCall &failing) { sendMuch(failing); });
}

TEST_P(MessagingWhoseSystemCallsFail, FindsAServiceThatComesLater) {
    failEvery({"poll"}, [&](FailingCall &failing) { subscribeEarly(failing); });
}

TEST_P(MessagingWhoseSystemCallsFail, FindsAServiceInAFolderThatIsMadeAgain) {
    failEvery({"poll", "setsockopt"}, [&](FailingCall &failing) { loseTheFolder(failing); });
}

}  // namespace

}  // namespace torture
