// SPDX-License-Identifier: Apache-2.0
// The initiator's end of the messaging, while memory runs out at each place of its work in turn.
#include <gtest/gtest.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "korvo_core.h"
#include "korvo_core_private.h"
#include "support/peer.h"
#include "support/rounds.h"
#include "support/workspace.h"

namespace torture {

namespace {

using end_to_end::long_timeout_ms;
using end_to_end::milliseconds;
using end_to_end::patience;

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;
constexpr auto lost = KORVO_CORE_STATUS_IPC_FAILED;

constexpr char command[] = "a command";
constexpr char substitute[] = "nothing came";

bool isShortage(korvo_core_status status) {
    return status == KORVO_CORE_STATUS_ALLOC_FAILED || status == lost;
}

/// An initiator with what its callbacks got. Nothing of its own fails or is recorded.
class Initiator {
  public:
    ~Initiator() { close(); }

    korvo_core_status open() { return korvo_core_ipc_initiator_init(nullptr, "torture", &handle_, 0); }
    void close() {
        if (handle_ != nullptr) {
            EXPECT_EQ(korvo_core_ipc_deinit(std::exchange(handle_, nullptr)), done);
        }
    }
    void openOrDie() { ASSERT_EQ(open(), done); }

    void *handle() const { return handle_; }

    korvo_core_status registerForResponses() {
        return korvo_core_ipc_initiator_response_receive_callback(handle_, takeResponse, this);
    }
    korvo_core_status registerForEvents() {
        return korvo_core_ipc_initiator_event_receive_callback(handle_, takeEvent, this);
    }
    korvo_core_status subscribe() { return korvo_core_ipc_initiator_event_subscribe(handle_, Peer::service); }

    korvo_core_status sendAsynchronously(char const *request_id) {
        return korvo_core_private_command_send(handle_, Peer::service, "", request_id, command,
                                               sizeof command - 1, this, substitute);
    }
    /// A whole synchronous call.
    korvo_core_status exchange(char const *request_id) {
        korvo_core_status status = korvo_core_private_command_send(
            handle_, Peer::service, "", request_id, command, sizeof command - 1, this, nullptr);
        return status == done ? receive(request_id) : status;
    }
    korvo_core_status receive(char const *request_id) {
        char *response = nullptr;
        std::size_t length = 0;
        korvo_core_status const status =
            korvo_core_private_response_receive(handle_, long_timeout_ms, request_id, &response, &length);
        if (status == done) {
            EXPECT_STREQ(response, command);
            std::free(response);
        }
        return status;
    }

    /// Waits for so many callbacks with this identifier.
    bool waitForResponse(char const *request_id, milliseconds limit = patience) {
        live_blocks::Unnoticed const unnoticed;
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return responses_[request_id].size() == 1; });
    }
    std::vector<std::string> responses(char const *request_id) {
        live_blocks::Unnoticed const unnoticed;
        std::lock_guard<std::mutex> const lock(mutex_);
        return responses_[request_id];
    }
    bool waitForEvent(char const *event, milliseconds limit = patience) {
        live_blocks::Unnoticed const unnoticed;
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return events_.count(event) != 0; });
    }

  private:
    static void takeResponse(char **, char **, char **request_id, char **response, void *context) {
        live_blocks::Unnoticed const unnoticed;
        auto &self = *static_cast<Initiator *>(context);
        std::lock_guard<std::mutex> const lock(self.mutex_);
        self.responses_[*request_id].emplace_back(*response);
        self.changed_.notify_all();
    }
    static void takeEvent(char **, char **, char **event, void *context) {
        live_blocks::Unnoticed const unnoticed;
        auto &self = *static_cast<Initiator *>(context);
        std::lock_guard<std::mutex> const lock(self.mutex_);
        self.events_.insert(*event);
        self.changed_.notify_all();
    }

    void *handle_ = nullptr;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, std::vector<std::string>> responses_;
    std::set<std::string> events_;
};

class MessagingWithoutMemory : public ::testing::Test {
  protected:
    void SetUp() override {
        if (!live_blocks::canFail()) {
            GTEST_SKIP() << "allocations cannot be made to fail under this sanitizer";
        }
        setenv("KORVO_LOG_LEVEL", "warning", 1);
        (void)korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_DEBUG, "begin");
        peer_.emplace();
    }

    /// The next calls of every kind are served.
    void expectUsable(Initiator &initiator) const {
        live_blocks::Unnoticed const unnoticed;
        EXPECT_EQ(initiator.exchange("afterwards"), done);
        EXPECT_EQ(initiator.registerForResponses(), done);
        EXPECT_EQ(initiator.sendAsynchronously("called back"), done);
        EXPECT_TRUE(initiator.waitForResponse("called back")) << "no callback afterwards";
        EXPECT_EQ(initiator.responses("called back"), std::vector<std::string>{command});
    }
    /// Events arrive, or do again as soon as the subscription has been made again.
    void expectEvents(Initiator &initiator) const {
        live_blocks::Unnoticed const unnoticed;
        EXPECT_EQ(initiator.registerForEvents(), done);
        auto const end = end_to_end::Clock::now() + patience;
        bool came = false;
        while (!came && end_to_end::Clock::now() < end) {
            peer_->publish("again");
            came = initiator.waitForEvent("again", milliseconds(20));
        }
        EXPECT_TRUE(came) << "no events afterwards";
    }

    /// Without memory that comes back nothing can be read; afterwards everything is.
    static bool comes(Initiator &initiator, char const *request_id, Fault &fault) {
        if (fault.isForEver() && !initiator.waitForResponse(request_id, milliseconds(20))) {
            fault.stop();
        }
        return initiator.waitForResponse(request_id);
    }

    std::optional<Peer> peer_;
};

TEST_F(MessagingWithoutMemory, OpensAndClosesOrTellsThatItCannot) {
    failEveryAllocation("opening and closing", [&](Fault &fault) {
        Initiator initiator;
        fault.start();
        korvo_core_status const opened = initiator.open();
        korvo_core_status const heard = opened == done ? initiator.subscribe() : opened;
        korvo_core_status const called = heard == done ? initiator.registerForEvents() : heard;
        fault.stop();
        EXPECT_TRUE(called == done || (fault.failed() != 0 && isShortage(called))) << called;
        if (opened == done) {
            expectUsable(initiator);
        }
        if (called == done) {
            expectEvents(initiator);
        }
        initiator.close();
    });
    failEveryAllocation("closing", [&](Fault &fault) {
        {
            // Something to be freed and told while it closes.
            Initiator initiator;
            initiator.openOrDie();
            EXPECT_EQ(initiator.subscribe(), done);
            EXPECT_EQ(initiator.registerForEvents(), done);
            EXPECT_EQ(initiator.exchange("before"), done);
            EXPECT_EQ(initiator.registerForResponses(), done);
            EXPECT_EQ(initiator.sendAsynchronously("pending"), done);
            EXPECT_EQ(initiator.receive("nobody sent it"), lost);
            EXPECT_EQ(initiator.receive("nor this"), lost);
            fault.start();
            initiator.close();
            fault.stop();
        }
    });
}

TEST_F(MessagingWithoutMemory, EndsAnAsynchronousCallOnce) {
    failEveryAllocation("an asynchronous call", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        fault.start();
        korvo_core_status status = initiator.registerForResponses();
        if (status == done) {
            status = initiator.sendAsynchronously("one");
        }
        if (status == done) {
            EXPECT_TRUE(comes(initiator, "one", fault)) << "it was taken and is never called back";
        }
        fault.stop();
        EXPECT_TRUE(status == done || (fault.failed() != 0 && isShortage(status))) << status;
        expectUsable(initiator);
        std::vector<std::string> const responses = initiator.responses("one");
        EXPECT_EQ(responses.size(), status == done ? 1U : 0U);
        for (std::string const &response : responses) {
            EXPECT_TRUE(response == command || (fault.failed() != 0 && response == substitute)) << response;
        }
    });
}

TEST_F(MessagingWithoutMemory, GivesEachCallerOfABufferItsResponse) {
    failEveryAllocation("three responses in one buffer", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        char const *const requests[] = {"first", "second", "third"};
        unsigned int const before = peer_->commands();
        for (char const *const request : requests) {
            ASSERT_EQ(korvo_core_private_command_send(initiator.handle(), Peer::service, "", request, command,
                                                      sizeof command - 1, this, nullptr),
                      done);
        }
        while (peer_->commands() != before + 3) {
            std::this_thread::yield();
        }
        fault.start();
        unsigned int answered = 0;
        for (char const *const request : requests) {
            korvo_core_status const status = initiator.receive(request);
            EXPECT_TRUE(status == done || isShortage(status)) << status;
            answered += status == done ? 1 : 0;
        }
        fault.stop();
        // Who has lost what is told; a response is lost for one failure each.
        EXPECT_GE(answered + fault.failed(), 3U);
        expectUsable(initiator);
    });
}

TEST_F(MessagingWithoutMemory, DeliversTheEventsThatComeAfterwards) {
    failEveryAllocation("an event", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        EXPECT_EQ(initiator.registerForEvents(), done);
        EXPECT_EQ(initiator.subscribe(), done);
        expectEvents(initiator);
        fault.start();
        peer_->publish("during");
        auto const end = end_to_end::Clock::now() + (fault.isForEver() ? milliseconds(20) : patience);
        while (!initiator.waitForEvent("during", milliseconds(1)) && !fault.isOver() &&
               end_to_end::Clock::now() < end) {
        }
        fault.stop();
        if (fault.failed() == 0) {
            EXPECT_TRUE(initiator.waitForEvent("during"));
        }
        {
            live_blocks::Unnoticed const unnoticed;
            peer_->publish("after");
            EXPECT_TRUE(initiator.waitForEvent("after"));
        }
        expectUsable(initiator);
    });
}

TEST_F(MessagingWithoutMemory, EndsEveryCallOfALostConnectionAndWorksOnANewOne) {
    failEveryAllocation("a lost connection", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        EXPECT_EQ(initiator.registerForEvents(), done);
        EXPECT_EQ(initiator.registerForResponses(), done);
        EXPECT_EQ(initiator.subscribe(), done);
        peer_->keepSilent(true);
        EXPECT_EQ(initiator.sendAsynchronously("one"), done);
        EXPECT_EQ(initiator.sendAsynchronously("two"), done);
        EXPECT_EQ(korvo_core_private_command_send(initiator.handle(), Peer::service, "", "three", command,
                                                  sizeof command - 1, this, nullptr),
                  done);
        fault.start();
        peer_->close();
        EXPECT_TRUE(isShortage(initiator.receive("three")));
        for (char const *const request : {"one", "two"}) {
            EXPECT_TRUE(comes(initiator, request, fault)) << request << " is never called back";
            live_blocks::Unnoticed const unnoticed;
            EXPECT_EQ(initiator.responses(request), std::vector<std::string>{substitute});
        }
        korvo_core_status const gone = initiator.exchange("four");
        EXPECT_TRUE(gone == KORVO_CORE_STATUS_DISABLED_TARGET || (fault.failed() != 0 && isShortage(gone)))
            << gone;
        peer_->keepSilent(false);
        peer_->open();
        korvo_core_status const back = initiator.exchange("five");
        EXPECT_TRUE(back == done || (fault.failed() != 0 && isShortage(back))) << back;
        fault.stop();
        expectUsable(initiator);
        expectEvents(initiator);
    });
}

TEST_F(MessagingWithoutMemory, TakesCallbacksAndSubscriptionsBack) {
    failEveryAllocation("taking back", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        EXPECT_EQ(initiator.registerForEvents(), done);
        EXPECT_EQ(initiator.registerForResponses(), done);
        EXPECT_EQ(initiator.subscribe(), done);
        EXPECT_EQ(initiator.exchange("before"), done);
        fault.start();
        korvo_core_status const left =
            korvo_core_ipc_initiator_event_unsubscribe(initiator.handle(), Peer::service);
        EXPECT_EQ(korvo_core_ipc_initiator_event_receive_callback(initiator.handle(), nullptr, &initiator),
                  done);
        EXPECT_EQ(korvo_core_ipc_initiator_response_receive_callback(initiator.handle(), nullptr, &initiator),
                  done);
        korvo_core_status const again = initiator.exchange("again");
        fault.stop();
        EXPECT_TRUE(left == done || (fault.failed() != 0 && isShortage(left))) << left;
        EXPECT_TRUE(again == done || (fault.failed() != 0 && isShortage(again))) << again;
        expectUsable(initiator);
    });
}

TEST_F(MessagingWithoutMemory, GivesResponsesOfNoObjectToWhoeverReceives) {
    failEveryAllocation("a command of no object", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        fault.start();
        korvo_core_status status = korvo_core_ipc_initiator_command_send(initiator.handle(), Peer::service,
                                                                         nullptr, "plain", command);
        if (status == done) {
            char *texts[4] = {};
            status = korvo_core_ipc_initiator_response_receive(initiator.handle(), long_timeout_ms, &texts[0],
                                                               &texts[1], &texts[2], &texts[3]);
            for (char *const text : texts) {
                std::free(text);
            }
        }
        fault.stop();
        EXPECT_TRUE(status == done || (fault.failed() != 0 && isShortage(status))) << status;
        expectUsable(initiator);
    });
}

}  // namespace

}  // namespace torture
