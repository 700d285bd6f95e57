// SPDX-License-Identifier: Apache-2.0
// Client objects: JSON commands and responses, and which object a response goes to.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/ends.h"
#include "support/object.h"

namespace {

/// The method and number of a command as Object sends it, however the platform writes numbers.
struct Asked {
    std::string method;
    double number = 0;
};

Asked asked(Command const &command) {
    std::string text = command.command;
    text.erase(
        std::remove_if(text.begin(), text.end(), [](char byte) { return byte == ' ' || byte == '\n'; }),
        text.end());
    char method[64] = "";
    double number = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), "{\"command\":\"%63[^\"]\",\"number\":%lf}%n", method, &number, &used) !=
            2 ||
        static_cast<std::size_t>(used) != text.size()) {
        ADD_FAILURE() << "unexpected command: " << command.command;
    }
    return {method, number};
}

/// Answers with the command's own method and number, and status 0.
std::string echo(Command const &command) {
    Asked const question = asked(command);
    return "{\"command\":\"" + question.method +
           "\",\"status\":0,\"number\":" + std::to_string(static_cast<long>(question.number)) + "}";
}

}  // namespace

TEST(ObjectCommands, ArriveAsJsonWithTheirMembersInOrder) {
    Service service;
    Object object;
    ASSERT_EQ(object.send("id", "Measure", 12.5), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "id");
    EXPECT_EQ(asked(command).method, "Measure");
    EXPECT_EQ(asked(command).number, 12.5);
}

TEST(ObjectCommands, ToAServiceThatIsNotThereAreRefused) {
    Object object;
    EXPECT_EQ(object.send("id", "Measure"), KORVO_CORE_STATUS_DISABLED_TARGET);
}

TEST(ObjectResponses, BringEveryKindOfValue) {
    Service service;
    service.answerWith([](Command const &) {
        return "{\"command\":\"Get\",\"status\":0,\"text\":\"a\\\"\\u00e4\\n\",\"number\":-2.5,\"large\":"
               "4294967295,"
               "\"yes\":true,\"no\":false,\"nothing\":null,\"list\":[1,2,3],\"object\":{\"a\":{\"b\":[]}}}";
    });
    Object object;
    json::Object read;
    ASSERT_EQ(object.exchange("Get", 0, read), KORVO_CORE_STATUS_NO_ERROR);
    json::Object const &response = read;
    EXPECT_EQ(response["text"].CastTo<json::String>().value(), "a\"\xc3\xa4\n");
    EXPECT_EQ(numberIn(response, "number"), -2.5);
    EXPECT_EQ(numberIn(response, "large"), 4294967295.0);
    EXPECT_TRUE(response["yes"].CastTo<json::Boolean>().value());
    EXPECT_FALSE(response["no"].CastTo<json::Boolean>().value());
    EXPECT_NO_THROW((void)response["nothing"].CastTo<json::Null>());
    json::Array const &list = response["list"].CastTo<json::Array>();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list.begin()->CastTo<json::Number>().value(), 1.0);
    json::Object const &inner = response["object"].CastTo<json::Object>();
    EXPECT_TRUE(inner["a"].CastTo<json::Object>()["b"].CastTo<json::Array>().empty());
}

TEST(ObjectResponses, WithAStatusGiveThatStatusAndNoResponse) {
    for (unsigned int status : {1U, 8U, 9U, 10U, 77U}) {
        Service service;
        service.answerWith([&](Command const &) {
            return "{\"command\":\"Get\",\"status\":" + std::to_string(status) + ",\"number\":5}";
        });
        Object object;
        json::Object response;
        EXPECT_EQ(object.exchange("Get", 0, response), static_cast<korvo_core_status>(status));
        EXPECT_TRUE(response.empty());
    }
}

TEST(ObjectResponses, WithoutAStatusGive4) {
    Service service;
    service.answerWith([](Command const &) { return "{\"command\":\"Get\",\"number\":5}"; });
    Object object;
    json::Object response;
    EXPECT_EQ(object.exchange("Get", 0, response), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_TRUE(response.empty());
}

TEST(ObjectResponses, ThatAreBrokenGive4AndTheNextCallWorks) {
    for (char const *broken :
         {"nonsense", "{\"status\":0", "[]", "17", "{\"status\":0}}", "{\"status\":}", "\"text\""}) {
        Service service;
        bool is_broken = true;
        service.answerWith(
            [&](Command const &command) { return is_broken ? std::string(broken) : echo(command); });
        Object object;
        json::Object response;
        EXPECT_EQ(object.exchange("Get", 1, response), KORVO_CORE_STATUS_IPC_FAILED) << broken;
        EXPECT_TRUE(response.empty()) << broken;
        is_broken = false;
        EXPECT_EQ(object.exchange("Get", 2, response), KORVO_CORE_STATUS_NO_ERROR) << broken;
        EXPECT_EQ(numberIn(response, "number"), 2.0);
    }
}

TEST(ObjectResponses, AreReceivedInAnyOrder) {
    Service service;
    service.answerWith(echo);
    Object object;
    ASSERT_EQ(object.send("first", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(object.send("second", "Get", 2), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(object.send("third", "Get", 3), KORVO_CORE_STATUS_NO_ERROR);
    json::Object response;
    ASSERT_EQ(object.receive("third", "Get", response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(numberIn(response, "number"), 3.0);
    ASSERT_EQ(object.receive("first", "Get", response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(numberIn(response, "number"), 1.0);
    ASSERT_EQ(object.receive("second", "Get", response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(numberIn(response, "number"), 2.0);
}

TEST(ObjectResponses, CanBeReceivedAfterATimeOut) {
    Service service;
    Object object;
    ASSERT_EQ(object.send("id", "Get", 4), KORVO_CORE_STATUS_NO_ERROR);
    json::Object response;
    EXPECT_EQ(object.receive("id", "Get", response, 0), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(object.receive("id", "Get", response, 30), KORVO_CORE_STATUS_IPC_FAILED);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(command, echo(command)), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(object.receive("id", "Get", response, -1), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(numberIn(response, "number"), 4.0);
}

TEST(ObjectResponses, ToAsynchronousRequestsAreDispatched) {
    Service service;
    service.answerWith(echo);
    Object object;
    ASSERT_EQ(object.sendAsync("id", "Get", 6), KORVO_CORE_STATUS_NO_ERROR);
    auto const response = object.responses.take();
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->method, "Get");
    EXPECT_EQ(response->target, "");
    EXPECT_EQ(response->request_id, "id");
    EXPECT_EQ(numberIn(response->response, "status"), 0.0);
    EXPECT_EQ(numberIn(response->response, "number"), 6.0);
}

TEST(ObjectResponses, WithAStatusAreDispatchedWithIt) {
    Service service;
    service.answerWith([](Command const &) { return "{\"command\":\"Get\",\"status\":9}"; });
    Object object;
    ASSERT_EQ(object.sendAsync("id", "Get"), KORVO_CORE_STATUS_NO_ERROR);
    auto const response = object.responses.take();
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(numberIn(response->response, "status"), 9.0);
}

TEST(ObjectResponses, GoToTheObjectThatAskedAlsoOnASharedHandle) {
    Service service;
    service.answerWith(echo);
    Client shared;
    Object one(shared.handle());
    Object other(shared.handle());
    ASSERT_EQ(one.sendAsync("from-one", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(other.sendAsync("from-other", "Get", 2), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(one.sendAsync("from-one-again", "Get", 3), KORVO_CORE_STATUS_NO_ERROR);
    auto const to_other = other.responses.take();
    ASSERT_TRUE(to_other.has_value());
    EXPECT_EQ(to_other->request_id, "from-other");
    auto const first = one.responses.take();
    auto const second = one.responses.take();
    ASSERT_TRUE(first.has_value() && second.has_value());
    EXPECT_EQ(first->request_id, "from-one");
    EXPECT_EQ(second->request_id, "from-one-again");
    shared.close();
    EXPECT_EQ(one.responses.count(), 2U);
    EXPECT_EQ(other.responses.count(), 1U);
}

TEST(ObjectResponses, OfSynchronousCallsAreNotDispatchedWhileCallbacksAreRegistered) {
    Service service;
    service.answerWith(echo);
    Object object;
    ASSERT_EQ(object.sendAsync("async", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(object.responses.take().has_value());
    for (int number = 0; number < 20; ++number) {
        json::Object response;
        ASSERT_EQ(object.exchange("Get", number, response), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(numberIn(response, "number"), static_cast<double>(number));
    }
    EXPECT_EQ(object.responses.count(), 1U);
}

TEST(ObjectResponses, SentBeforeTheyAreReceivedAreNotDispatchedEither) {
    Service service;
    service.answerWith(echo);
    Object object;
    ASSERT_EQ(object.sendAsync("async", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(object.responses.take().has_value());
    ASSERT_EQ(object.send("later", "Get", 2), KORVO_CORE_STATUS_NO_ERROR);
    // The response to this one comes after the one to "later", which has had its chance to go astray.
    ASSERT_EQ(object.sendAsync("marker", "Get", 3), KORVO_CORE_STATUS_NO_ERROR);
    auto const marker = object.responses.take();
    ASSERT_TRUE(marker.has_value());
    EXPECT_EQ(marker->request_id, "marker");
    json::Object response;
    ASSERT_EQ(object.receive("later", "Get", response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(numberIn(response, "number"), 2.0);
}

TEST(ObjectResponses, AreKeptAfterACallbackWasRegisteredForACommandThatWasNeverSent) {
    Service service;
    service.answerWith(echo);
    Object object;
    ASSERT_EQ(object.sendAsync("async", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(object.responses.take().has_value());
    object.registerForResponses();
    ASSERT_EQ(object.send("kept", "Get", 2), KORVO_CORE_STATUS_NO_ERROR);
    // More asynchronous ones than anything remembers.
    for (int number = 0; number < 40; ++number) {
        ASSERT_EQ(object.sendAsync(std::to_string(number).c_str(), "Get", 3), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_TRUE(object.responses.take().has_value());
    }
    json::Object response;
    ASSERT_EQ(object.receive("kept", "Get", response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(numberIn(response, "number"), 2.0);
    EXPECT_EQ(object.responses.count(), 41U);
}

TEST(ObjectResponses, ThatAreBrokenAreNotDispatched) {
    Service service;
    service.answerWith([](Command const &command) {
        double const number = asked(command).number;
        return number == 1   ? std::string("{\"command\":\"Get\",")
               : number == 2 ? std::string("{\"status\":0}")
                             : echo(command);
    });
    Object object;
    ASSERT_EQ(object.sendAsync("broken", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(object.sendAsync("nameless", "Get", 2), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(object.sendAsync("good", "Get", 3), KORVO_CORE_STATUS_NO_ERROR);
    auto const response = object.responses.take();
    ASSERT_TRUE(response.has_value());
    EXPECT_EQ(response->request_id, "good");
}

TEST(ObjectCalls, FromInsideACallbackAreAnswered) {
    Service service;
    service.answerWith(echo);
    Object object;
    object.at_response = [](Object &self) {
        json::Object response;
        EXPECT_EQ(self.exchange("Inner", 7, response), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(numberIn(response, "number"), 7.0);
    };
    ASSERT_EQ(object.sendAsync("first", "Get", 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(object.sendAsync("second", "Get", 2), KORVO_CORE_STATUS_NO_ERROR);
    auto const first = object.responses.take();
    auto const second = object.responses.take();
    ASSERT_TRUE(first.has_value() && second.has_value());
    EXPECT_EQ(first->request_id, "first");
    EXPECT_EQ(second->request_id, "second");
}

TEST(ObjectCalls, OfManyThreadsOnOneHandleEachGetTheirOwnResponse) {
    constexpr int threads = 8;
    constexpr int calls = 100;
    Service service;
    service.answerWith(echo);
    Object object;
    object.collectEvents();
    std::vector<std::thread> callers;
    for (int caller = 0; caller < threads; ++caller) {
        callers.emplace_back([&, caller] {
            for (int call = 0; call < calls; ++call) {
                double const number = caller * calls + call;
                json::Object response;
                EXPECT_EQ(object.exchange("Get", number, response), KORVO_CORE_STATUS_NO_ERROR);
                EXPECT_EQ(numberIn(response, "number"), number);
                if (call % 10 == 0) {
                    std::string const id = "async-" + std::to_string(caller) + "-" + std::to_string(call);
                    EXPECT_EQ(object.sendAsync(id.c_str(), "Get", number), KORVO_CORE_STATUS_NO_ERROR);
                    EXPECT_EQ(service.publish("{\"event\":\"Noise\"}"), KORVO_CORE_STATUS_NO_ERROR);
                }
            }
        });
    }
    for (std::thread &caller : callers) {
        caller.join();
    }
    for (int count = 0; count < threads * calls / 10; ++count) {
        auto const response = object.responses.take();
        ASSERT_TRUE(response.has_value()) << count;
        int caller = -1;
        int call = -1;
        ASSERT_EQ(std::sscanf(response->request_id.c_str(), "async-%d-%d", &caller, &call), 2);
        EXPECT_EQ(numberIn(response->response, "number"), static_cast<double>(caller * calls + call));
    }
}

TEST(ObjectEvents, AreDispatchedWithSourceNameAndPayload) {
    Service service("sample", "north");
    Object object;
    object.collectEvents();
    std::optional<Object::Event> event;
    auto const end = std::chrono::steady_clock::now() + patience;
    while (!event.has_value() && std::chrono::steady_clock::now() < end) {
        // Broken ones, and one without a name, are passed over.
        ASSERT_EQ(service.publish("{\"event\":"), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.publish("{\"level\":1}"), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(service.publish("{\"event\":\"Moved\",\"level\":3}"), KORVO_CORE_STATUS_NO_ERROR);
        event = object.events.take(std::chrono::milliseconds(20));
    }
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->source, "north");
    EXPECT_EQ(event->name, "Moved");
    EXPECT_EQ(numberIn(event->payload, "level"), 3.0);
}

TEST(ObjectMessages, WithoutATextAreNotDispatched) {
    Object object;
    std::string service = "sample";
    std::string target;
    std::string request_id = "id";
    std::string response = "{\"command\":\"Get\",\"status\":0}";
    std::string event = "{\"event\":\"Moved\"}";
    std::array<char *, 4> texts{service.data(), target.data(), request_id.data(), response.data()};
    std::array<char *, 3> event_texts{service.data(), target.data(), event.data()};
    char *none = nullptr;
    object.initiatorResponseCallback(nullptr, &texts[1], &texts[2], &texts[3]);
    object.initiatorResponseCallback(&texts[0], nullptr, &texts[2], &texts[3]);
    object.initiatorResponseCallback(&texts[0], &texts[1], nullptr, &texts[3]);
    object.initiatorResponseCallback(&texts[0], &texts[1], &texts[2], nullptr);
    object.initiatorResponseCallback(&texts[0], &texts[1], &texts[2], &none);
    object.initiatorCallback(nullptr, &event_texts[1], &event_texts[2]);
    object.initiatorCallback(&event_texts[0], nullptr, &event_texts[2]);
    object.initiatorCallback(&event_texts[0], &event_texts[1], nullptr);
    object.initiatorCallback(&event_texts[0], &event_texts[1], &none);
    EXPECT_EQ(object.responses.count(), 0U);
    EXPECT_EQ(object.events.count(), 0U);
    object.initiatorResponseCallback(&texts[0], &texts[1], &texts[2], &texts[3]);
    object.initiatorCallback(&event_texts[0], &event_texts[1], &event_texts[2]);
    EXPECT_EQ(object.responses.count(), 1U);
    EXPECT_EQ(object.events.count(), 1U);
}

TEST(TextConversion, CopiesTexts) {
    char *text = nullptr;
    ASSERT_EQ(convertJsonToValue(json::String("door \xc3\xa4"), &text), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_STREQ(text, "door \xc3\xa4");
    std::free(text);
    ASSERT_EQ(convertJsonToValue(json::String(""), &text), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_STREQ(text, "");
    std::free(text);
}

TEST(TextConversion, NeedsAPlaceForTheText) {
    EXPECT_EQ(convertJsonToValue(json::String("text"), nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST(TextConversion, RefusesWhatIsNoTextAndStoresNothing) {
    char *text = nullptr;
    EXPECT_EQ(convertJsonToValue(json::Number(1), &text), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(convertJsonToValue(json::Boolean(true), &text), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(convertJsonToValue(json::Null(), &text), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(convertJsonToValue(json::Array(), &text), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(convertJsonToValue(json::Object(), &text), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(text, nullptr);
}
