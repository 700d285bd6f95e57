// SPDX-License-Identifier: Apache-2.0
// Commands and responses on the plain C interface.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "support/ends.h"

TEST(Commands, ReachThePollingServiceUnchanged) {
    Service service("sample", "north");
    Client client;
    ASSERT_EQ(client.send("id-1", "{\"command\":\"Look\",\"text\":\"\xc3\xa4 \\\" \\n\"}", "sample", "north"),
              KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_FALSE(command.source.empty());
    EXPECT_EQ(command.request_id, "id-1");
    EXPECT_EQ(command.command, "{\"command\":\"Look\",\"text\":\"\xc3\xa4 \\\" \\n\"}");
}

TEST(Commands, AreAnsweredWithServiceTargetIdentifierAndResponse) {
    Service service("sample", "north");
    Client client;
    ASSERT_EQ(client.send("id-2", "{}", "sample", "north"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(command, "{\"status\":0}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response, (Response{"sample", "north", "id-2", "{\"status\":0}"}));
}

TEST(Commands, KeepTheirOrder) {
    Service service;
    Client client;
    for (int number = 0; number < 100; ++number) {
        std::string const id = std::to_string(number);
        ASSERT_EQ(client.send(id.c_str(), "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (int number = 0; number < 100; ++number) {
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(command.request_id, std::to_string(number));
    }
}

TEST(Commands, WithoutATargetGoToTheDefaultTarget) {
    Service service("sample", "");
    Client client;
    ASSERT_EQ(client.send("id-3", "{}", "sample", nullptr), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "id-3");
}

TEST(Commands, ReachTheTargetThatIsMeant) {
    Service north("sample", "north");
    Service south("sample", "south");
    Client client;
    ASSERT_EQ(client.send("to-south", "{}", "sample", "south"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("to-north", "{}", "sample", "north"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(north.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "to-north");
    ASSERT_EQ(south.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "to-south");
}

TEST(Commands, ToAServiceThatIsNotThereAreRefused) {
    Service service("sample", "north");
    Client client;
    EXPECT_EQ(client.send("id", "{}", "absent", "north"), KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(client.send("id", "{}", "sample", "absent"), KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(client.send("id", "{}", "sample", "../north"), KORVO_CORE_STATUS_DISABLED_TARGET);
}

TEST(Commands, ToAServiceThatHasStoppedAreRefusedAndWorkAgainWhenItIsBack) {
    Client client;
    {
        Service service;
        ASSERT_EQ(client.send("first", "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    }
    EXPECT_EQ(client.send("second", "{}"), KORVO_CORE_STATUS_DISABLED_TARGET);
    Service again;
    ASSERT_EQ(client.send("third", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(again.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "third");
}

TEST(Commands, GoToTheCallbackWhileOneIsRegistered) {
    Service service;
    service.answerWith([](Command const &command) { return "{\"echo\":" + command.command + "}"; });
    Client client;
    ASSERT_EQ(client.send("id-4", "{\"a\":1}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "id-4");
    EXPECT_EQ(response.response, "{\"echo\":{\"a\":1}}");
}

TEST(Commands, MayBeAnsweredLaterAndInAnyOrder) {
    Service service;
    Client client;
    ASSERT_EQ(client.send("first", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("second", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command first;
    Command second;
    ASSERT_EQ(service.poll(first), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.poll(second), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(second, "{\"n\":2}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(first, "{\"n\":1}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "second");
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "first");
}

TEST(Responses, GoToTheInitiatorThatAsked) {
    Service service;
    Client one;
    Client other;
    ASSERT_EQ(one.send("same-id", "{\"from\":\"one\"}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(other.send("same-id", "{\"from\":\"other\"}"), KORVO_CORE_STATUS_NO_ERROR);
    for (int count = 0; count < 2; ++count) {
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.respond(command, command.command), KORVO_CORE_STATUS_NO_ERROR);
    }
    Response response;
    ASSERT_EQ(one.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, "{\"from\":\"one\"}");
    ASSERT_EQ(other.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, "{\"from\":\"other\"}");
}

TEST(Responses, GoToTheCallbackWhileOneIsRegistered) {
    Service service("sample", "north");
    service.answerWith([](Command const &) { return "{\"status\":0}"; });
    Client client;
    client.collectResponses();
    ASSERT_EQ(client.send("id-5", "{}", "sample", "north"), KORVO_CORE_STATUS_NO_ERROR);
    auto const response = client.responses.take();
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(*response, (Response{"sample", "north", "id-5", "{\"status\":0}"}));
}

TEST(Responses, AreReceivedAgainAfterTheCallbackIsGone) {
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client client;
    client.collectResponses();
    ASSERT_EQ(client.send("to-callback", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(client.responses.take().has_value());
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), nullptr, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("to-receiver", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "to-receiver");
}

TEST(Responses, MayBeTakenOverByTheCallback) {
    struct Kept {
        Mailbox<char *> texts;
        static void take(char **, char **, char **, char **response, void *context) {
            static_cast<Kept *>(context)->texts.put(*response);
            *response = nullptr;
        }
    } kept;
    Service service;
    service.answerWith([](Command const &) { return "{\"kept\":true}"; });
    Client client;
    ASSERT_EQ(korvo_core_ipc_initiator_response_receive_callback(client.handle(), Kept::take, &kept),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    auto const text = kept.texts.take();
    ASSERT_TRUE(text.has_value());
    client.close();
    EXPECT_STREQ(*text, "{\"kept\":true}");
    std::free(*text);
}

TEST(Responses, ToAnInitiatorThatIsGoneAreRefusedAndDoNoHarm) {
    Service service;
    Command command;
    {
        Client client;
        ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    }
    // The first may still be on its way out when the service has not noticed yet that nobody is there.
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    auto const end = std::chrono::steady_clock::now() + patience;
    while (status == KORVO_CORE_STATUS_NO_ERROR && std::chrono::steady_clock::now() < end) {
        status = service.respond(command, "{}");
        (void)service.poll(command, 0);
    }
    EXPECT_EQ(status, KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(service.respond({"nobody", "id", ""}, "{}"), KORVO_CORE_STATUS_DISABLED_TARGET);

    Client another;
    ASSERT_EQ(another.send("next", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "next");
}

TEST(TimeOuts, OfZeroPoll) {
    Service service;
    Client client;
    Response response;
    Command command;
    EXPECT_EQ(client.receive(response, 0), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(service.poll(command, 0), KORVO_CORE_STATUS_IPC_FAILED);
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(client.receive(response, 0), KORVO_CORE_STATUS_IPC_FAILED);
}

TEST(TimeOuts, AreMillisecondsAndEndInStatus4) {
    Service service;
    Client client;
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.receive(response, 60), KORVO_CORE_STATUS_IPC_FAILED);
    auto const spent = std::chrono::steady_clock::now() - start;
    EXPECT_GE(spent, std::chrono::milliseconds(59));
    EXPECT_LT(spent, patience);

    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    auto const second_start = std::chrono::steady_clock::now();
    EXPECT_EQ(service.poll(command, 60), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_GE(std::chrono::steady_clock::now() - second_start, std::chrono::milliseconds(59));
}

TEST(TimeOuts, BelowZeroWaitAsLongAsItTakes) {
    Service service;
    Client client;
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    korvo_core_status status = KORVO_CORE_STATUS_IPC_FAILED;
    std::thread receiver([&] { status = client.receive(response, -1); });
    Command command;
    EXPECT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    receiver.join();
    EXPECT_EQ(status, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "id");
}

TEST(Names, OfAServiceAndTargetAreTakenOnce) {
    Service service("sample", "north");
    void *second = nullptr;
    EXPECT_NE(korvo_core_ipc_target_init(nullptr, "sample", "north", "second", &second),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(second, nullptr);
    service.close();
    ASSERT_EQ(korvo_core_ipc_target_init(nullptr, "sample", "north", "third", &second),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_ipc_deinit(second), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(Names, MayBeLongEmptyOrHostile) {
    std::string const very_long(5000, 'x');
    Client client;
    for (std::string const &target : {very_long, std::string(), std::string("../../etc/passwd"),
                                      std::string("a/b"), std::string("."), std::string("\n\xff")}) {
        Service service("sample", target.c_str());
        ASSERT_EQ(client.send("id", "{}", "sample", target.c_str()), KORVO_CORE_STATUS_NO_ERROR);
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Response response;
        ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(response.target, target);
    }
}
