// SPDX-License-Identifier: Apache-2.0
// Callbacks that throw. Nothing of that reaches the thread that makes them, which tells it and goes on.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "support/ends.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;

/// Throws what the text asks for.
void throwIfAsked(std::string const &text) {
    if (text == "exception") {
        throw std::runtime_error("no luck");
    }
    if (text == "number") {
        throw 1;
    }
}

void takeResponse(char **, char **, char **, char **response, void *context) {
    static_cast<Mailbox<std::string> *>(context)->put(*response);
    throwIfAsked(*response);
}

void takeEvent(char **, char **, char **event, void *context) {
    static_cast<Mailbox<std::string> *>(context)->put(*event);
    throwIfAsked(*event);
}

void expectTold(std::string const &log, char const *what) {
    EXPECT_NE(log.find(std::string(what) + " threw an exception: no luck\n"), std::string::npos) << log;
    EXPECT_NE(log.find(std::string(what) + " threw something that is no exception\n"), std::string::npos)
        << log;
}

}  // namespace

TEST(ThrowingCallbacks, OfAServiceAreToldAndTheNextCommandIsServed) {
    Service service;
    testing::internal::CaptureStderr();
    service.answerWith([](Command const &command) {
        throwIfAsked(command.command);
        return command.command;
    });
    Client client;
    ASSERT_EQ(client.send("1", "exception"), done);
    ASSERT_EQ(client.send("2", "number"), done);
    ASSERT_EQ(client.send("3", "served"), done);
    Response response;
    EXPECT_EQ(client.receive(response), done);
    EXPECT_EQ(response.request_id, "3");
    expectTold(testing::internal::GetCapturedStderr(), "a command callback");
}

TEST(ThrowingCallbacks, OfAnInitiatorAreToldAndTheNextOnesAreMade) {
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client client;
    Mailbox<std::string> taken;
    testing::internal::CaptureStderr();
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), takeResponse, &taken),
              done);
    for (char const *const text : {"exception", "number", "taken"}) {
        ASSERT_EQ(client.send(text, text), done);
        EXPECT_EQ(taken.take(), text);
    }
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), nullptr, &taken), done);
    expectTold(testing::internal::GetCapturedStderr(), "a callback");

    testing::internal::CaptureStderr();
    ASSERT_EQ(client.subscribe(), done);
    client.collectEvents();
    ASSERT_TRUE(publishUntilReceived(service, client, "begin"));
    ASSERT_EQ(korvo_core_ipc_initiator_event_receive_callback(client.handle(), takeEvent, &taken), done);
    for (char const *const text : {"exception", "number", "taken"}) {
        ASSERT_EQ(service.publish(text), done);
        std::optional<std::string> event = taken.take();
        while (event == "begin") {
            event = taken.take();
        }
        EXPECT_EQ(event, text);
    }
    ASSERT_EQ(korvo_core_ipc_initiator_event_receive_callback(client.handle(), nullptr, &taken), done);
    expectTold(testing::internal::GetCapturedStderr(), "a callback");
}
