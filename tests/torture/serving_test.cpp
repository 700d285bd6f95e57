// SPDX-License-Identifier: Apache-2.0
// The service's end of the messaging, while memory runs out at each place of its work in turn. Its clients have memory.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/initiator.h"
#include "support/rounds.h"
#include "support/workspace.h"

namespace torture {

namespace {

class ServingWithoutMemory : public ::testing::Test {
  protected:
    void SetUp() override { openLog(); }

    /// A command that was taken is answered, or its caller told that it is lost; where memory does not come back it may
    /// wait until it does.
    static void expectTold(Initiator &client, char const *request_id, korvo_core_status sent, Fault &fault) {
        if (sent != done) {
            return;
        }
        if (fault.isForEver() && !client.waitForResponse(request_id, milliseconds(20))) {
            fault.stop();
        }
        EXPECT_TRUE(client.waitForResponse(request_id))
            << request_id << " was sent, and nobody tells what became of it";
        for (std::string const &response : client.responses(request_id)) {
            EXPECT_TRUE(response == command || response == substitute) << response;
        }
    }
};

TEST_F(ServingWithoutMemory, TellsEachCallerAndWorksOn) {
    failEveryAllocation("serving", [&](Fault &fault) {
        Peer service(Peer::Memory::fails);
        std::optional<live_blocks::Unnoticed> safely(std::in_place);
        Initiator known;
        Initiator listener;
        Initiator comes;
        known.openOrDie();
        listener.openOrDie();
        comes.openOrDie();
        EXPECT_EQ(known.registerForResponses(), done);
        EXPECT_EQ(comes.registerForResponses(), done);
        EXPECT_EQ(known.exchange("before"), done);
        EXPECT_EQ(listener.subscribe(), done);
        expectEvents(listener, service);
        fault.start();
        expectTold(known, "of one that is known", known.sendAsynchronously("of one that is known"), fault);
        expectTold(comes, "of one that comes", comes.sendAsynchronously("of one that comes"), fault);
        korvo_core_status const subscribed = comes.subscribe();
        korvo_core_status const left = listener.subscribe();
        EXPECT_EQ(subscribed, done);
        EXPECT_EQ(left, done);
        safely.reset();
        korvo_core_status const published = service.publish("during");
        EXPECT_TRUE(published == done || (fault.failed() != 0 && published == KORVO_CORE_STATUS_ALLOC_FAILED))
            << published;
        safely.emplace();
        if (published == done && fault.failed() == 0) {
            EXPECT_TRUE(listener.waitForEvent("during"));
        }
        // A connection that ends while memory is short.
        comes.close();
        expectTold(known, "at last", known.sendAsynchronously("at last"), fault);
        fault.stop();
        expectUsable(known);
        expectEvents(listener, service);
        known.close();
        listener.close();
        safely.reset();
    });
}

TEST_F(ServingWithoutMemory, OpensAndClosesOrTellsThatItCannot) {
    failEveryAllocation("opening and closing a service", [&](Fault &fault) {
        void *handle = nullptr;
        fault.start();
        korvo_core_status const opened =
            korvo_core_ipc_target_init(nullptr, Peer::service, "", "torture", &handle);
        EXPECT_TRUE(opened == done || (fault.failed() != 0 && opened == KORVO_CORE_STATUS_ALLOC_FAILED))
            << opened;
        EXPECT_EQ(opened == done, handle != nullptr);
        if (opened == done) {
            EXPECT_EQ(korvo_core_ipc_deinit(handle), done);
        }
        fault.stop();
        Peer const again;
    });
    failEveryAllocation("closing a service with clients", [&](Fault &fault) {
        Peer service(Peer::Memory::fails);
        std::optional<live_blocks::Unnoticed> safely(std::in_place);
        Initiator client;
        client.openOrDie();
        EXPECT_EQ(client.subscribe(), done);
        EXPECT_EQ(client.exchange("before"), done);
        safely.reset();
        fault.start();
        service.close();
        fault.stop();
        safely.emplace();
        client.close();
    });
}

}  // namespace

}  // namespace torture
