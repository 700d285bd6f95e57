// SPDX-License-Identifier: Apache-2.0
// The initiator's end of the messaging, while memory runs out at each place of its work in turn.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/initiator.h"
#include "support/rounds.h"
#include "support/workspace.h"

namespace torture {

namespace {

class MessagingWithoutMemory : public ::testing::Test {
  protected:
    void SetUp() override {
        openLog();
        peer_.emplace();
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
            expectEvents(initiator, *peer_);
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
        expectEvents(initiator, *peer_);
        fault.start();
        (void)peer_->publish("during");
        auto const end = processes::Clock::now() + (fault.isForEver() ? milliseconds(20) : patience);
        while (!initiator.waitForEvent("during", milliseconds(1)) && !fault.isOver() &&
               processes::Clock::now() < end) {
        }
        fault.stop();
        if (fault.failed() == 0) {
            EXPECT_TRUE(initiator.waitForEvent("during"));
        }
        {
            live_blocks::Unnoticed const unnoticed;
            (void)peer_->publish("after");
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
        expectEvents(initiator, *peer_);
    });
}

// The names of what appeared are told in one go with the folder's end, since nobody reads them before.
TEST_F(MessagingWithoutMemory, FindsAServiceInAFolderThatIsMadeAgain) {
    std::filesystem::path const folder = end_to_end::Workspace::ofThisProgram().runtimeFolder();
    failEveryAllocation("a folder that was removed", [&](Fault &fault) {
        Initiator initiator;
        initiator.openOrDie();
        {
            live_blocks::Unnoticed const unnoticed;
            peer_->close();
            EXPECT_EQ(initiator.subscribe(), done);
            std::ofstream const file(folder / "new");
            std::filesystem::rename(folder / "new", folder / "a name that is too long to need no memory");
            std::filesystem::remove_all(folder);
        }
        fault.start();
        korvo_core_status const called = initiator.registerForEvents();
        {
            live_blocks::Unnoticed const unnoticed;
            (void)processes::becomesTrue([&] { return fault.isOver() || std::filesystem::exists(folder); },
                                         milliseconds(20));
            peer_->open();
        }
        fault.stop();
        EXPECT_TRUE(called == done || (fault.failed() != 0 && isShortage(called))) << called;
        expectUsable(initiator);
        expectEvents(initiator, *peer_);
        expectToFindLaterServices(initiator);
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
