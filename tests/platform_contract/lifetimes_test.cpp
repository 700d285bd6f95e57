// SPDX-License-Identifier: Apache-2.0
// Opening, closing, and what a closed handle does to calls that use it.
#include <gtest/gtest.h>

#include <thread>

#include "support/ends.h"

TEST(Handles, NeedAPlaceToBeStored) {
    EXPECT_EQ(korvo_core_ipc_initiator_init(nullptr, "name", nullptr, 1), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_init(nullptr, "service", "", "name", nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST(Handles, ThatAreNullAreRefused) {
    char *text = nullptr;
    EXPECT_EQ(korvo_core_ipc_deinit(nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_initiator_command_send(nullptr, "s", "", "i", "{}"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_initiator_response_receive(nullptr, 0, &text, &text, &text, &text),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_initiator_event_subscribe(nullptr, "s"), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_command_receive(nullptr, 0, &text, &text, &text),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_response_send(nullptr, "s", "i", "{}"), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_event_send(nullptr, "{}"), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST(Handles, OfTheOtherKindAreRefused) {
    Service service;
    Client client;
    EXPECT_EQ(korvo_core_ipc_initiator_command_send(service.handle(), "sample", "", "id", "{}"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_event_send(client.handle(), "{}"), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST(Handles, NeedTheirTexts) {
    Service service;
    Client client;
    EXPECT_EQ(korvo_core_ipc_initiator_command_send(client.handle(), nullptr, "", "id", "{}"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_initiator_command_send(client.handle(), "sample", "", nullptr, "{}"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_initiator_command_send(client.handle(), "sample", "", "id", nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_response_send(service.handle(), nullptr, "id", "{}"),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_ipc_target_event_send(service.handle(), nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST(Closing, EndsAReceiveThatWaitsInAnotherThread) {
    Service service;
    Client client;
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Mailbox<korvo_core_status> ended;
    std::thread receiver([&, handle = client.handle()] {
        char *text[4] = {};
        ended.put(
            korvo_core_ipc_initiator_response_receive(handle, -1, &text[0], &text[1], &text[2], &text[3]));
    });
    // Gives the thread a chance to be inside; the result is the same status or, if it is late, that of a
    // closed handle.
    EXPECT_FALSE(ended.take(std::chrono::milliseconds(50)).has_value());
    client.close();
    auto const status = ended.take();
    receiver.join();
    ASSERT_TRUE(status.has_value());
    EXPECT_NE(*status, KORVO_CORE_STATUS_NO_ERROR);
}

TEST(Closing, EndsAPollThatWaitsInAnotherThread) {
    Service service;
    Mailbox<korvo_core_status> ended;
    std::thread poller([&, handle = service.handle()] {
        char *text[3] = {};
        ended.put(korvo_core_ipc_target_command_receive(handle, 20000, &text[0], &text[1], &text[2]));
    });
    EXPECT_FALSE(ended.take(std::chrono::milliseconds(50)).has_value());
    service.close();
    auto const status = ended.take(std::chrono::seconds(5));
    poller.join();
    ASSERT_TRUE(status.has_value());
    EXPECT_NE(*status, KORVO_CORE_STATUS_NO_ERROR);
}

namespace {

/// A response callback that stays inside until it is let go.
struct Staying {
    Gate entered;
    Gate let_go;
    Gate left;

    static void stay(char **, char **, char **, char **, void *context) {
        auto &self = *static_cast<Staying *>(context);
        self.entered.open();
        EXPECT_TRUE(self.let_go.wait());
        self.left.open();
    }
};

}  // namespace

TEST(Closing, WaitsForACallbackThatIsRunning) {
    Staying staying;
    Service service;
    service.answerWith([](Command const &) { return "{}"; });
    Client client;
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), Staying::stay, &staying),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(staying.entered.wait());
    Gate closed;
    std::thread closer([&] {
        client.close();
        // Nothing of the callback runs any more.
        EXPECT_TRUE(staying.left.wait(std::chrono::milliseconds(0)));
        closed.open();
    });
    EXPECT_FALSE(closed.wait(std::chrono::milliseconds(50)));
    staying.let_go.open();
    EXPECT_TRUE(closed.wait());
    closer.join();
}

TEST(Closing, FromInsideAResponseCallbackComesBack) {
    struct Closer {
        void *handle;
        Mailbox<korvo_core_status> closed;
        static void close(char **, char **, char **, char **, void *context) {
            auto &self = *static_cast<Closer *>(context);
            self.closed.put(korvo_core_ipc_deinit(self.handle));
        }
    };
    Service service;
    service.answerWith([](Command const &) { return "{}"; });
    void *handle = nullptr;
    ASSERT_EQ(korvo_core_ipc_initiator_init(nullptr, "closer", &handle, 1), KORVO_CORE_STATUS_NO_ERROR);
    Closer closer{handle, {}};
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(handle, Closer::close, &closer),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_core_ipc_initiator_command_send(handle, "sample", "", "id", "{}"),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(closer.closed.take(), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(Closing, FromInsideACommandCallbackComesBack) {
    struct Closer {
        void *handle = nullptr;
        Mailbox<korvo_core_status> closed;
        static void close(char **, char **, char **, void *context) {
            auto &self = *static_cast<Closer *>(context);
            self.closed.put(korvo_core_ipc_deinit(self.handle));
        }
    } closer;
    ASSERT_EQ(korvo_core_ipc_target_init(nullptr, "closing", "", "closer", &closer.handle),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_core_ipc_target_command_receive_callback(closer.handle, Closer::close, &closer),
              KORVO_CORE_STATUS_NO_ERROR);
    Client client;
    ASSERT_EQ(client.send("id", "{}", "closing", ""), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(closer.closed.take(), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(Closing, LetsAResponseThatWasSentBeforeArrive) {
    Client client;
    Response response;
    {
        Service service;
        ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.respond(command, "{\"last\":true}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, "{\"last\":true}");
}
