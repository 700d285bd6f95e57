// SPDX-License-Identifier: Apache-2.0
// How the forms that wait for a response wait, and how they read it.

#include "client_test.h"
#include "left_behind.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::Text;

class ReceivingForm : public EveryForm {
  protected:
    /// What came of one call.
    struct Outcome {
        korvo_core_status status;
        /// Was the request identifier freed? For the forms that make it themselves it always is in the end.
        bool identifier_freed;
    };

    /// Calls the form with an identifier where it takes one; frees it afterwards if the library did not.
    Outcome call(Client const &client, Outs &outs, FormCall arguments = FormCall()) {
        live_blocks::Recording recording;
        arguments.request_id = takesIdentifier() ? strdup(sample_request_id) : nullptr;
        void const *address = arguments.request_id;
        korvo_core_status const status =
            callForm(client, name(), form(), arguments, Inputs(samples(expected().inputs)), outs);
        std::vector<live_blocks::Block> const left = recording.end();
        if (!takesIdentifier()) {
            address = fake_platform::calls(Function::send_command).back().request_id_address;
        }
        bool const kept = holdsIdentifier(left, address);
        if (kept) {
            korvo_api_action_engine_free_uuid(arguments.request_id);
        }
        return {status, !kept};
    }

    /// Frees the identifier of a call that failed; freeing it twice would show, and so would not freeing it.
    static void freeAfterFailure(korvo_core_status status, FormCall const &arguments) {
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            korvo_api_action_engine_free_uuid(arguments.request_id);
        }
    }

    /// A successful call frees the identifier; a failed one frees it when its caller never sees it.
    bool freedOnFailure() const { return !takesIdentifier(); }

    bool takesIdentifier() const { return form() == Form::receive || form() == Form::receive_with_timeout; }

    Values expectedResults() const { return samples(expected().results); }

    /// Reads a response in which something is off and expects these results with status 0.
    void expectReads(json::Object const &response, Values const &results, std::string const &what) {
        Client const client;
        fake_platform::respond(response);
        Outs outs(kinds(expected().results));
        Outcome const outcome = call(client, outs);
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_NO_ERROR) << what;
        EXPECT_EQ(outs.values(), results) << what;
        EXPECT_TRUE(outcome.identifier_freed) << what;
        EXPECT_TRUE(fake_platform::logLines().empty()) << what;
    }

    /// Expects the results before `failing` to be stored, and nothing from there on.
    void expectStoredBefore(std::size_t failing, Outs const &outs, std::string const &what) {
        for (std::size_t place = 0; place < expected().results.size(); ++place) {
            EXPECT_EQ(outs.written(place), place < failing) << what << ": " << expected().results[place].name;
            if (place < failing) {
                EXPECT_EQ(outs.value(place), expectedResults()[place]) << what;
            }
        }
    }

    std::string conversionWarning(Kind kind, korvo_core_status status) const {
        return std::string(expected().reader) + ":failed converting " +
               (kind == Kind::numbers ? "UINT" : "STR") + " array (" + std::to_string(status) + ")";
    }
};

FOR_EVERY_OPERATION_AND(ReceivingForm, Form::send, Form::send_with_timeout, Form::receive,
                        Form::receive_with_timeout);

TEST_P(ReceivingForm, ReadsTheResultsAndFreesTheIdentifier) {
    expectReads(responseOf(expected()), expectedResults(), "a good response");
}

TEST_P(ReceivingForm, WaitsForTheResponseToItsRequest) {
    for (char const *target : {sample_target, "", static_cast<char const *>(nullptr)}) {
        Client const client;
        fake_platform::respond(responseOf(expected()));
        Outs outs(kinds(expected().results));
        FormCall arguments;
        arguments.target = target;
        EXPECT_EQ(call(client, outs, arguments).status, KORVO_CORE_STATUS_NO_ERROR);

        std::vector<Call> const received = fake_platform::calls(Function::receive_response);
        ASSERT_EQ(received.size(), 1U);
        EXPECT_EQ(received[0].service, Text("action_engine"));
        EXPECT_EQ(received[0].target, target != nullptr ? Text(target) : Text());
        EXPECT_EQ(received[0].method, Text(expected().method));
        EXPECT_EQ(received[0].object, client.handle());
        EXPECT_TRUE(received[0].json.empty());
        if (takesIdentifier()) {
            EXPECT_EQ(received[0].request_id, Text(sample_request_id));
            EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
        } else {
            EXPECT_EQ(received[0].request_id, fake_platform::calls(Function::send_command).at(0).request_id);
        }
        EXPECT_TRUE(fake_platform::calls(Function::response_receive_callback).empty());
    }
}

TEST_P(ReceivingForm, WaitsAsLongAsItShould) {
    struct Case {
        FormCall arguments;
        int expected;
    };
    std::vector<Case> cases;
    if (form() == Form::send) {
        cases.push_back({FormCall(), 5000});
    } else if (form() == Form::receive) {
        for (unsigned char const block : std::vector<unsigned char>{0, 1, 2, 255}) {
            FormCall arguments;
            arguments.block = block;
            cases.push_back({arguments, block == 0 ? 0 : 5000});
        }
    } else {
        for (int const timeout : {0, 1, 5000, 2147483647, -1}) {
            FormCall arguments;
            arguments.timeout = timeout;
            cases.push_back({arguments, timeout});
        }
    }
    for (Case const &one : cases) {
        Client const client;
        fake_platform::respond(responseOf(expected()));
        Outs outs(kinds(expected().results));
        EXPECT_EQ(call(client, outs, one.arguments).status, KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(fake_platform::calls(Function::receive_response).size(), 1U);
        EXPECT_EQ(fake_platform::calls(Function::receive_response)[0].number, one.expected);
    }
}

TEST_P(ReceivingForm, PassesStatusesOfReceivingThroughAndWritesNothing) {
    for (korvo_core_status const status : failures()) {
        Client const client;
        fake_platform::arrange(Function::receive_response, status);
        // Even a response that is there is not looked at.
        fake_platform::respond(responseOf(expected()));
        Outs outs(kinds(expected().results), Outs::Lists::occupied);
        Outcome const outcome = call(client, outs);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.identifier_freed, freedOnFailure());
        EXPECT_TRUE(outs.untouched());
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_P(ReceivingForm, TurnsAnExceptionOfReceivingIntoStatus4) {
    for (fake_platform::Throw const exception : exceptions()) {
        Client const client;
        fake_platform::arrange(Function::receive_response, exception);
        Outs outs(kinds(expected().results), Outs::Lists::occupied);
        Outcome const outcome = call(client, outs);
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_EQ(outcome.identifier_freed, freedOnFailure());
        EXPECT_TRUE(outs.untouched());
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_P(ReceivingForm, ReadsAnAbsentResultAsEmpty) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        Values results = expectedResults();
        results[place] = emptyOf(result.kind);
        expectReads(without(responseOf(expected()), result.name), results, result.name);
    }
}

TEST_P(ReceivingForm, ReadsAnEmptyResponseAsEmptyResults) {
    Values results;
    for (Member const &result : expected().results) {
        results.push_back(emptyOf(result.kind));
    }
    expectReads(json::Object(), results, "nothing at all");
}

TEST_P(ReceivingForm, ReadsAResultOfAnotherTypeAsEmpty) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        Values results = expectedResults();
        results[place] = emptyOf(result.kind);
        for (json::UnknownElement const &element : mistyped(result.kind)) {
            expectReads(with(responseOf(expected()), result.name, element), results, result.name);
        }
    }
}

TEST_P(ReceivingForm, IgnoresMembersThatAreNoResults) {
    json::Object response = responseOf(expected());
    response["unheard_of"] = json::String("x");
    // The platform reports the outcome; this reader never looks at "status".
    response["status"] = json::String("9");
    expectReads(response, expectedResults(), "more members");
}

TEST_P(ReceivingForm, CutsNumbersToWholeOnesWithinTheirType) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        Values results = expectedResults();
        if (result.kind == Kind::number) {
            for (Conversion const &conversion : conversions()) {
                results[place] = conversion.read;
                expectReads(with(responseOf(expected()), result.name, json::Number(conversion.json)), results,
                            std::to_string(conversion.json));
            }
        } else if (result.kind == Kind::numbers) {
            json::Array array;
            Numbers read;
            for (Conversion const &conversion : conversions()) {
                array.Insert(json::Number(conversion.json));
                read.push_back(conversion.read);
            }
            results[place] = read;
            expectReads(with(responseOf(expected()), result.name, array), results, "a list of all edges");
        }
    }
}

TEST_P(ReceivingForm, ReadsFlagsAsOneOrZero) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        if (result.kind == Kind::flag) {
            for (bool const value : {true, false}) {
                Values results = expectedResults();
                results[place] = static_cast<unsigned char>(value ? 1 : 0);
                expectReads(with(responseOf(expected()), result.name, json::Boolean(value)), results,
                            result.name);
            }
        }
    }
}

TEST_P(ReceivingForm, ReadsEmptyAndLongTextsAndLists) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        Values edges;
        if (result.kind == Kind::text) {
            edges = {std::string(), std::string(65536, 'y'), std::string("\"\\\n\xC3\xA9")};
        } else if (result.kind == Kind::texts) {
            edges = {Texts(), Texts{""}, Texts(300, "an element")};
        } else if (result.kind == Kind::numbers) {
            edges = {Numbers(), Numbers{0}, Numbers(300, 4294967295U)};
        }
        for (Value const &edge : edges) {
            Values results = expectedResults();
            results[place] = edge;
            expectReads(with(responseOf(expected()), result.name, toJson(edge)), results, result.name);
        }
    }
}

TEST_P(ReceivingForm, GivesStatus4ForAListOfNumbersWithAnElementThatIsNone) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        if (result.kind != Kind::numbers) {
            continue;
        }
        for (json::UnknownElement const &element : mistypedElements(result.kind)) {
            json::Array array = toJson(result.sample).CastTo<json::Array>();
            *(array.end() - 1) = element;
            expectLeftBehind(leftBehindBy(Fault::element_of_numbers, name(), result.name), [&] {
                Client const client;
                fake_platform::respond(with(responseOf(expected()), result.name, array));
                Outs outs(kinds(expected().results));
                FormCall arguments;
                arguments.request_id = takesIdentifier() ? strdup(sample_request_id) : nullptr;
                korvo_core_status const returned =
                    callForm(client, name(), form(), arguments, Inputs(samples(expected().inputs)), outs);
                EXPECT_EQ(returned, KORVO_CORE_STATUS_IPC_FAILED);
                expectStoredBefore(place, outs, result.name);
                EXPECT_TRUE(fake_platform::logLines().empty());
                freeAfterFailure(returned, arguments);
            });
        }
    }
}

TEST_P(ReceivingForm, PassesTheStatusOfARefusedElementThroughWithALine) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        if (result.kind != Kind::texts) {
            continue;
        }
        // An element that the platform refuses by itself, the first or the last, gives 4.
        for (json::UnknownElement const &element : mistypedElements(result.kind)) {
            json::Array array = toJson(result.sample).CastTo<json::Array>();
            *(array.end() - 1) = element;
            Client const client;
            fake_platform::respond(with(responseOf(expected()), result.name, array));
            Outs outs(kinds(expected().results));
            Outcome const outcome = call(client, outs);
            EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_IPC_FAILED);
            EXPECT_EQ(outcome.identifier_freed, freedOnFailure());
            EXPECT_EQ(fake_platform::logLines(),
                      client.onlyWarning(conversionWarning(Kind::texts, KORVO_CORE_STATUS_IPC_FAILED)));
            expectStoredBefore(place, outs, result.name);
        }
        // Which conversion of the response is refused decides which list fails; the statuses are anything.
        unsigned int first_conversion = 1;
        for (std::size_t before = 0; before < place; ++before) {
            if (auto const *texts = std::get_if<Texts>(&expected().results[before].sample)) {
                first_conversion += static_cast<unsigned int>(texts->size());
            }
        }
        for (korvo_core_status const status : failures()) {
            expectLeftBehind({}, [&] {
                Client const client;
                fake_platform::arrange(Function::convert_json_to_value, status, first_conversion);
                fake_platform::respond(responseOf(expected()));
                Outs outs(kinds(expected().results));
                FormCall arguments;
                arguments.request_id = takesIdentifier() ? strdup(sample_request_id) : nullptr;
                korvo_core_status const returned =
                    callForm(client, name(), form(), arguments, Inputs(samples(expected().inputs)), outs);
                EXPECT_EQ(returned, status);
                EXPECT_EQ(fake_platform::logLines(),
                          client.onlyWarning(conversionWarning(Kind::texts, status)));
                expectStoredBefore(place, outs, result.name);
                freeAfterFailure(returned, arguments);
            });
        }
    }
}

TEST_P(ReceivingForm, TurnsAnExceptionOfAConversionIntoStatus4) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        if (result.kind != Kind::texts) {
            continue;
        }
        // The last element of this list; all conversions of earlier lists succeed.
        unsigned int last_conversion = 0;
        for (std::size_t before = 0; before <= place; ++before) {
            if (auto const *texts = std::get_if<Texts>(&expected().results[before].sample)) {
                last_conversion += static_cast<unsigned int>(texts->size());
            }
        }
        for (fake_platform::Throw const exception : exceptions()) {
            expectLeftBehind({}, [&] {
                Client const client;
                fake_platform::arrange(Function::convert_json_to_value, exception, last_conversion);
                fake_platform::respond(responseOf(expected()));
                Outs outs(kinds(expected().results));
                FormCall arguments;
                arguments.request_id = takesIdentifier() ? strdup(sample_request_id) : nullptr;
                korvo_core_status const returned =
                    callForm(client, name(), form(), arguments, Inputs(samples(expected().inputs)), outs);
                EXPECT_EQ(returned, KORVO_CORE_STATUS_IPC_FAILED);
                EXPECT_TRUE(fake_platform::logLines().empty());
                expectStoredBefore(place, outs, result.name);
                freeAfterFailure(returned, arguments);
            });
        }
    }
}

TEST_P(ReceivingForm, RefusesAListVariableThatIsNotNull) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        Member const &result = expected().results[place];
        if (!isList(result.kind)) {
            continue;
        }
        Client const client;
        fake_platform::respond(responseOf(expected()));
        Outs outs(kinds(expected().results));
        outs.occupy(place);
        Outcome const outcome = call(client, outs);
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_INVALID_PARAMS) << result.name;
        EXPECT_EQ(outcome.identifier_freed, freedOnFailure());
        EXPECT_EQ(fake_platform::logLines(),
                  client.onlyWarning(conversionWarning(result.kind, KORVO_CORE_STATUS_INVALID_PARAMS)));
        expectStoredBefore(place, outs, result.name);
    }
}

TEST_P(ReceivingForm, GivesStatus4WhenTheLineAboutAConversionThrows) {
    for (std::size_t place = 0; place < expected().results.size(); ++place) {
        if (!isList(expected().results[place].kind)) {
            continue;
        }
        for (fake_platform::Throw const exception : exceptions()) {
            Client const client;
            fake_platform::arrange(Function::log, exception);
            fake_platform::respond(responseOf(expected()));
            Outs outs(kinds(expected().results));
            outs.occupy(place);
            Outcome const outcome = call(client, outs);
            EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_IPC_FAILED);
            EXPECT_EQ(outcome.identifier_freed, freedOnFailure());
        }
    }
}

class TwoStepReceiving : public EveryOperation {};
FOR_EVERY_OPERATION(TwoStepReceiving);

TEST_P(TwoStepReceiving, CanBeRepeatedWithTheSameIdentifierAfterAFailure) {
    Client const client;
    Operation const &under_test = operation(name());
    char *request_id = nullptr;
    ASSERT_EQ(under_test.nonBlockingSend(client.handle(), sample_target, &request_id,
                                         Inputs(samples(expected().inputs))),
              KORVO_CORE_STATUS_NO_ERROR);
    Text const identifier = request_id;
    Outs outs(kinds(expected().results));
    // No response is there yet.
    EXPECT_EQ(under_test.receive(client.handle(), 0, sample_target, request_id, outs),
              KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(under_test.receiveWithTimeout(client.handle(), sample_target, 10, request_id, outs),
              KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_TRUE(outs.untouched());

    fake_platform::respond(responseOf(expected()));
    EXPECT_EQ(under_test.receive(client.handle(), 1, sample_target, request_id, outs),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(outs.values(), samples(expected().results));
    auto const received = fake_platform::calls(Function::receive_response);
    ASSERT_EQ(received.size(), 3U);
    for (Call const &call : received) {
        EXPECT_EQ(call.request_id, identifier);
    }
}

TEST_P(TwoStepReceiving, LeavesNothingBehind) {
    expectLeftBehind({}, [&] {
        Client const client;
        Operation const &under_test = operation(name());
        char *request_id = nullptr;
        EXPECT_EQ(under_test.nonBlockingSend(client.handle(), sample_target, &request_id,
                                             Inputs(samples(expected().inputs))),
                  KORVO_CORE_STATUS_NO_ERROR);
        fake_platform::respond(responseOf(expected()));
        Outs outs(kinds(expected().results));
        EXPECT_EQ(under_test.receive(client.handle(), 1, sample_target, request_id, outs),
                  KORVO_CORE_STATUS_NO_ERROR);
    });
}
