// SPDX-License-Identifier: Apache-2.0
// Asynchronous responses: which callback gets what, and what is logged instead.

#include <atomic>
#include <thread>

#include "client_test.h"
#include "left_behind.h"

using fake_platform::Function;
using fake_platform::Text;

class AsynchronousResponse : public EveryOperation {
  protected:
    Values expectedResults() const { return samples(expected().results); }

    std::string exceptionLine() const {
        return std::string("Threw an exception in function ") + expected().callback;
    }

    std::string unknownLine() const {
        return std::string("received a callback for ") + expected().method +
               " but no initiator callback was registered";
    }

    void deliver(std::string const &request_id, json::Object const &response) const {
        fake_platform::deliverResponse("camera-1/answering", request_id, response);
    }

    /// Expects the response to end in this line and no callback, and the registration to be alive afterwards.
    void expectRefused(json::Object const &response, unsigned int priority, std::string const &line,
                       std::vector<std::size_t> const &left_behind) {
        expectLeftBehind(left_behind, [&] {
            Client const client;
            Context context;
            std::string const request_id = sendAsync(client, name(), Callback::first, context);
            deliver(request_id, response);
            EXPECT_TRUE(context.calls.empty()) << line;
            EXPECT_EQ(fake_platform::logLines(),
                      priority == 3 ? client.onlyError(line) : client.onlyWarning(line));
            // The mutex is free and the registration is there.
            deliver(request_id, responseOf(expected()));
            EXPECT_EQ(context.calls.size(), 1U);
        });
    }
};
FOR_EVERY_OPERATION(AsynchronousResponse);

TEST_P(AsynchronousResponse, CallsBackWithTargetStatusResultsAndContext) {
    for (Callback const callback : {Callback::first, Callback::second}) {
        expectLeftBehind({}, [&] {
            Client const client;
            Context context;
            std::string const request_id = sendAsync(client, name(), callback, context);
            EXPECT_TRUE(context.calls.empty());
            deliver(request_id, responseOf(expected()));

            ASSERT_EQ(context.calls.size(), 1U);
            CallbackCall const &call = context.calls[0];
            EXPECT_EQ(call.target, Text("camera-1/answering"));
            EXPECT_EQ(call.status, KORVO_CORE_STATUS_NO_ERROR);
            EXPECT_EQ(call.results, expectedResults());
            EXPECT_EQ(call.callback, callback == Callback::first ? 1 : 2);
            EXPECT_TRUE(fake_platform::logLines().empty());
            EXPECT_TRUE(fake_platform::calls(Function::receive_response).empty());
        });
    }
}

TEST_P(AsynchronousResponse, HandsANullTargetOn) {
    Client const client;
    Context context;
    std::string const request_id = sendAsync(client, name(), Callback::first, context);
    fake_platform::deliverResponse(Text(), request_id, responseOf(expected()));
    ASSERT_EQ(context.calls.size(), 1U);
    EXPECT_EQ(context.calls[0].target, Text());
}

TEST_P(AsynchronousResponse, CallsBackAgainForASecondResponse) {
    Client const client;
    Context context;
    std::string const request_id = sendAsync(client, name(), Callback::first, context);
    for (std::size_t round = 1; round <= 3; ++round) {
        deliver(request_id, responseOf(expected()));
        EXPECT_EQ(context.calls.size(), round);
    }
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_P(AsynchronousResponse, GoesToTheRequestItAnswers) {
    Client const client;
    Context contexts[3];
    std::vector<std::string> identifiers;
    for (Context &context : contexts) {
        identifiers.push_back(sendAsync(client, name(), Callback::first, context));
    }
    deliver(identifiers[1], responseOf(expected()));
    deliver(identifiers[2], responseOf(expected()));
    deliver(identifiers[1], responseOf(expected()));
    EXPECT_EQ(contexts[0].calls.size(), 0U);
    EXPECT_EQ(contexts[1].calls.size(), 2U);
    EXPECT_EQ(contexts[2].calls.size(), 1U);
}

TEST_P(AsynchronousResponse, FindsTheCallbackAfterAFailedSending) {
    Client const client;
    Context refused;
    Context thrown;
    fake_platform::arrange(Function::send_command, KORVO_CORE_STATUS_DISABLED_TARGET, 1);
    fake_platform::arrange(Function::send_command, fake_platform::Throw::standard_exception, 2);
    std::string const first =
        sendAsync(client, name(), Callback::first, refused, KORVO_CORE_STATUS_DISABLED_TARGET);
    std::string const second =
        sendAsync(client, name(), Callback::first, thrown, KORVO_CORE_STATUS_IPC_FAILED);
    deliver(first, responseOf(expected()));
    deliver(second, responseOf(expected()));
    EXPECT_EQ(refused.calls.size(), 1U);
    EXPECT_EQ(thrown.calls.size(), 1U);
}

TEST_P(AsynchronousResponse, GivesNothingBesideAStatusThatIsNotZero) {
    Values nothing;
    for (Member const &result : expected().results) {
        nothing.push_back(nullOf(result.kind));
    }
    // The results are not even looked at: absent, mistyped or good, it is all the same.
    json::Object absent;
    absent["command"] = json::String(expected().method);
    json::Object wrong = responseOf(expected());
    for (Member const &result : expected().results) {
        wrong[result.name] = json::Null();
    }
    for (json::Object const &response : {absent, wrong, responseOf(expected())}) {
        for (korvo_core_status const status : failures()) {
            expectLeftBehind({}, [&] {
                Client const client;
                Context context;
                std::string const request_id = sendAsync(client, name(), Callback::first, context);
                deliver(request_id, with(response, "status", json::Number(status)));
                ASSERT_EQ(context.calls.size(), 1U);
                EXPECT_EQ(context.calls[0].status, status);
                EXPECT_EQ(context.calls[0].results, nothing);
                EXPECT_TRUE(fake_platform::logLines().empty());
            });
        }
    }
}

TEST_P(AsynchronousResponse, CutsTheStatusLikeAnyNumber) {
    for (Conversion const &conversion : conversions()) {
        Client const client;
        Context context;
        std::string const request_id = sendAsync(client, name(), Callback::first, context);
        deliver(request_id, with(responseOf(expected()), "status", json::Number(conversion.json)));
        ASSERT_EQ(context.calls.size(), 1U);
        EXPECT_EQ(context.calls[0].status, static_cast<korvo_core_status>(conversion.read));
    }
}

TEST_P(AsynchronousResponse, IsRefusedWithoutAStatus) {
    expectRefused(without(responseOf(expected()), "status"), 3, exceptionLine(), {});
    for (json::UnknownElement const &element : mistyped(Kind::number)) {
        expectRefused(with(responseOf(expected()), "status", element), 3, exceptionLine(), {});
    }
}

TEST_P(AsynchronousResponse, IsRefusedWhenAResultIsAbsentOrOfAnotherType) {
    for (Member const &result : expected().results) {
        std::vector<std::size_t> const left = leftBehindBy(Fault::unreadable_result, name(), result.name);
        expectRefused(without(responseOf(expected()), result.name), 3, exceptionLine(), left);
        for (json::UnknownElement const &element : mistyped(result.kind)) {
            expectRefused(with(responseOf(expected()), result.name, element), 3, exceptionLine(), left);
        }
    }
}

TEST_P(AsynchronousResponse, IsRefusedWhenAListOfNumbersHoldsSomethingElse) {
    for (Member const &result : expected().results) {
        if (result.kind == Kind::numbers) {
            for (json::UnknownElement const &element : mistypedElements(result.kind)) {
                json::Array array = toJson(result.sample).CastTo<json::Array>();
                *(array.end() - 1) = element;
                expectRefused(with(responseOf(expected()), result.name, array), 3, exceptionLine(),
                              leftBehindBy(Fault::element_of_numbers, name(), result.name));
            }
        }
    }
}

TEST_P(AsynchronousResponse, IsRefusedWithALineWhenAListCannotBeConverted) {
    for (Member const &result : expected().results) {
        if (result.kind == Kind::texts) {
            for (json::UnknownElement const &element : mistypedElements(result.kind)) {
                json::Array array = toJson(result.sample).CastTo<json::Array>();
                array.Insert(element);
                array.Insert(json::String("never reached"));
                expectRefused(with(responseOf(expected()), result.name, array), 4,
                              std::string(expected().callback) + " failed converting char array (4)",
                              leftBehindBy(Fault::unreadable_result, name(), result.name));
            }
        }
    }
}

TEST_P(AsynchronousResponse, NamesTheStatusOfAFailedConversion) {
    unsigned int conversion = 0;
    for (Member const &result : expected().results) {
        auto const *texts = std::get_if<Texts>(&result.sample);
        if (texts == nullptr) {
            continue;
        }
        conversion += static_cast<unsigned int>(texts->size());
        for (korvo_core_status const status : failures()) {
            expectLeftBehind(leftBehindBy(Fault::unreadable_result, name(), result.name), [&] {
                Client const client;
                Context context;
                std::string const request_id = sendAsync(client, name(), Callback::first, context);
                fake_platform::arrange(Function::convert_json_to_value, status, conversion);
                deliver(request_id, responseOf(expected()));
                EXPECT_TRUE(context.calls.empty());
                EXPECT_EQ(fake_platform::logLines(), client.onlyWarning(std::string(expected().callback) +
                                                                        " failed converting char array (" +
                                                                        std::to_string(status) + ")"));
            });
        }
        for (fake_platform::Throw const exception : exceptions()) {
            expectLeftBehind(leftBehindBy(Fault::unreadable_result, name(), result.name), [&] {
                Client const client;
                Context context;
                std::string const request_id = sendAsync(client, name(), Callback::first, context);
                fake_platform::arrange(Function::convert_json_to_value, exception, conversion);
                deliver(request_id, responseOf(expected()));
                EXPECT_TRUE(context.calls.empty());
                EXPECT_EQ(fake_platform::logLines(), client.onlyError(exceptionLine()));
            });
        }
    }
}

TEST_P(AsynchronousResponse, CutsNumbersToWholeOnesWithinTheirType) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        if (result.kind != Kind::number && result.kind != Kind::numbers) {
            continue;
        }
        for (Conversion const &conversion : conversions()) {
            json::Array array;
            array.Insert(json::Number(conversion.json));
            Client const client;
            Context context;
            std::string const request_id = sendAsync(client, name(), Callback::first, context);
            deliver(request_id,
                    with(responseOf(expected()), result.name,
                         result.kind == Kind::number ? json::UnknownElement(json::Number(conversion.json))
                                                     : json::UnknownElement(array)));
            Values results = expectedResults();
            results[place] =
                result.kind == Kind::number ? Value(conversion.read) : Value(Numbers{conversion.read});
            ASSERT_EQ(context.calls.size(), 1U);
            EXPECT_EQ(context.calls[0].results, results);
        }
    }
}

TEST_P(AsynchronousResponse, HandsEmptyTextsAndListsOn) {
    json::Object response = responseOf(expected());
    Values results;
    for (Member const &result : expected().results) {
        results.push_back(emptyOf(result.kind));
        response[result.name] = toJson(emptyOf(result.kind));
    }
    expectLeftBehind({}, [&] {
        Client const client;
        Context context;
        std::string const request_id = sendAsync(client, name(), Callback::first, context);
        deliver(request_id, response);
        ASSERT_EQ(context.calls.size(), 1U);
        EXPECT_EQ(context.calls[0].results, results);
    });
}

TEST_P(AsynchronousResponse, IsDroppedWithOneLineWhenNobodyAskedForIt) {
    Client const client;
    Context context;
    (void)sendAsync(client, name(), Callback::first, context);
    deliver(sample_request_id, responseOf(expected()));
    EXPECT_EQ(fake_platform::logLines(), client.onlyWarning(unknownLine()));
    EXPECT_TRUE(context.calls.empty());
    // An identifier of another operation is as unknown.
    std::string const other = name() == "get_actions" ? "get_triggers" : "get_actions";
    std::string const request_id = sendAsync(client, other, Callback::first, context);
    deliver(request_id, responseOf(expected()));
    EXPECT_EQ(fake_platform::logLines(), (std::vector<fake_platform::LogLine>{
                                             client.warning(unknownLine()), client.warning(unknownLine())}));
    EXPECT_TRUE(context.calls.empty());
}

TEST_P(AsynchronousResponse, IsHarmlessWhenTheLogThrows) {
    for (fake_platform::Throw const exception : exceptions()) {
        Client const client;
        Context context;
        std::string const request_id = sendAsync(client, name(), Callback::first, context);
        fake_platform::arrange(Function::log, exception);
        // A line in the handler of an exception, and a line of its own.
        deliver(request_id, without(responseOf(expected()), "status"));
        deliver(sample_request_id, responseOf(expected()));
        EXPECT_TRUE(context.calls.empty());
        deliver(request_id, responseOf(expected()));
        EXPECT_EQ(context.calls.size(), 1U);
    }
}

TEST_P(AsynchronousResponse, IsLoggedWhenTheCallbackThrows) {
    expectLeftBehind({}, [&] {
        Client const client;
        Context context;
        context.throws = true;
        std::string const request_id = sendAsync(client, name(), Callback::first, context);
        deliver(request_id, responseOf(expected()));
        EXPECT_EQ(context.calls.size(), 1U);
        EXPECT_EQ(fake_platform::logLines(), client.onlyError(exceptionLine()));
        deliver(request_id, responseOf(expected()));
        EXPECT_EQ(context.calls.size(), 2U);
    });
}

TEST_P(AsynchronousResponse, IsHarmlessWithoutACallback) {
    expectLeftBehind({}, [&] {
        Client const client;
        Context context;
        std::string const request_id = sendAsync(client, name(), Callback::none, context);
        deliver(request_id, responseOf(expected()));
        deliver(request_id, with(responseOf(expected()), "status", json::Number(9)));
        EXPECT_TRUE(context.calls.empty());
        EXPECT_TRUE(fake_platform::logLines().empty());
    });
}

TEST_P(AsynchronousResponse, FindsItsMutexHeldDuringTheCallback) {
    Client const client;
    Context context;
    Context other_context;
    std::string const request_id = sendAsync(client, name(), Callback::first, context);
    std::string const other = name() == "get_actions" ? "get_triggers" : "get_actions";
    Operation const &same = operation(name());
    context.during = [&] {
        std::size_t const sent = fake_platform::calls(Function::send_command).size();
        Inputs const inputs(samples(expected().inputs));
        EXPECT_EQ(same.sendAsync(client.handle(), sample_target, inputs, Callback::first, &context),
                  KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_EQ(same.cancelAsync(client.handle(), Callback::first, &context), KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_EQ(fake_platform::calls(Function::send_command).size(), sent);
        // Other operations have other mutexes, and synchronous forms need none.
        (void)sendAsync(client, other, Callback::first, other_context);
        EXPECT_EQ(operation(other).cancelAsync(client.handle(), Callback::second, &other_context),
                  KORVO_CORE_STATUS_NO_ERROR);
        fake_platform::respond(responseOf(expected()));
        Outs outs(kinds(expected().results));
        EXPECT_EQ(same.send(client.handle(), sample_target, inputs, outs), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(outs.values(), expectedResults());
    };
    deliver(request_id, responseOf(expected()));
    EXPECT_EQ(context.calls.size(), 1U);
    EXPECT_TRUE(fake_platform::logLines().empty());
    // Afterwards it is free again.
    context.during = nullptr;
    EXPECT_EQ(same.cancelAsync(client.handle(), Callback::second, &context), KORVO_CORE_STATUS_NO_ERROR);
}

TEST_P(AsynchronousResponse, MayArriveOnAnyThreadWhileOthersCall) {
    Client const client;
    Context context;
    std::string const request_id = sendAsync(client, name(), Callback::first, context);
    std::atomic<bool> go{false};
    std::thread messaging([&] {
        while (!go) {
            std::this_thread::yield();
        }
        for (int round = 0; round < 5; ++round) {
            deliver(request_id, responseOf(expected()));
        }
    });
    go = true;
    Context foreign;
    for (int round = 0; round < 5; ++round) {
        (void)sendAsync(client, name(), Callback::second, foreign);
        EXPECT_EQ(operation(name()).cancelAsync(client.handle(), Callback::none, &foreign),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    messaging.join();
    EXPECT_EQ(context.calls.size(), 5U);
}

TEST(AsynchronousResponses, OfAMethodThatIsNoneAreIgnored) {
    Client const client;
    Context context;
    std::string const request_id = sendAsync(client, "get_actions", Callback::first, context);
    for (char const *method : {"No_such_method", "get_actions", "Get_action", "", "Action_completed"}) {
        fake_platform::deliverResponse(
            sample_target, request_id,
            with(responseOf(expectation("get_actions")), "command", json::String(method)));
    }
    EXPECT_TRUE(context.calls.empty());
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST(AsynchronousResponses, ReachTheObjectThatAskedWhenTwoShareAMessagingHandle) {
    fake_platform::script();
    void *messaging = nullptr;
    void *first = nullptr;
    void *second = nullptr;
    ASSERT_EQ(korvo_core_ipc_initiator_init(nullptr, "shared", &messaging, 1), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_api_action_engine_initiator_init(messaging, nullptr, &first, 0, "a"),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_api_action_engine_initiator_init(messaging, nullptr, &second, 0, "b"),
              KORVO_CORE_STATUS_NO_ERROR);
    Expectation const &expected = expectation("get_action_type");
    Context contexts[2];
    std::size_t place = 0;
    for (void *handle : {first, second}) {
        EXPECT_EQ(operation("get_action_type")
                      .sendAsync(handle, sample_target, Inputs(samples(expected.inputs)), Callback::first,
                                 &contexts[place++]),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    auto const sent = fake_platform::calls(Function::send_command);
    ASSERT_EQ(sent.size(), 2U);
    fake_platform::deliverResponse(sample_target, *sent[0].request_id, responseOf(expected), first);
    EXPECT_EQ(contexts[0].calls.size(), 1U);
    EXPECT_EQ(contexts[1].calls.size(), 0U);
    fake_platform::deliverResponse(sample_target, *sent[1].request_id, responseOf(expected), second);
    EXPECT_EQ(contexts[1].calls.size(), 1U);
    EXPECT_EQ(korvo_core_ipc_deinit(messaging), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(first), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(second), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(LeftBehind, HoldsOnlyRowsOfOperationsAndResultsThatExist) {
    for (LeftBehind const &row : allLeftBehind()) {
        Expectation const &expected = expectation(row.operation);
        bool found = false;
        for (Member const &result : expected.results) {
            found = found || result.name == std::string(row.result);
        }
        EXPECT_TRUE(found) << row.operation << " " << row.result;
    }
    EXPECT_EQ(allLeftBehind().size(), 50U);
}
