// SPDX-License-Identifier: Apache-2.0
// What the sending forms send, and what they make of a platform that refuses.

#include <set>

#include "client_test.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::Text;

namespace {

std::vector<std::string> operationsWithPointers() {
    std::vector<std::string> names;
    for (Expectation const &expected : expectations()) {
        for (Member const &input : expected.inputs) {
            if (input.kind != Kind::number && input.kind != Kind::flag) {
                names.emplace_back(expected.operation);
                break;
            }
        }
    }
    return names;
}

}  // namespace

TEST(ContractTable, HoldsEveryOperationThatTheGlueBinds) {
    std::set<std::string> expected;
    for (std::string const &name : operationNames()) {
        EXPECT_TRUE(expected.insert(name).second) << name << " stands twice";
    }
    std::set<std::string> bound;
    for (auto const &[name, operation] : operations()) {
        bound.insert(name);
    }
    EXPECT_EQ(expected, bound);
}

class SendingForm : public EveryForm {
  protected:
    /// Calls the form with a good response lined up, and frees what a caller would.
    korvo_core_status call(Client const &client, Inputs const &inputs, char const *target = sample_target) {
        Outs outs(kinds(expected().results));
        FormCall arguments;
        arguments.target = target;
        arguments.context = &context_;
        if (receives(form())) {
            fake_platform::respond(responseOf(expected()));
        }
        korvo_core_status const status = callForm(client, name(), form(), arguments, inputs, outs);
        korvo_api_action_engine_free_uuid(arguments.request_id);
        return status;
    }

    static Call onlySent() {
        std::vector<Call> const sent = fake_platform::calls(Function::send_command);
        EXPECT_EQ(sent.size(), 1U);
        return sent.empty() ? Call() : sent.front();
    }

    Context context_;
};

FOR_EVERY_OPERATION_AND(SendingForm, Form::send, Form::send_with_timeout, Form::non_blocking_send,
                        Form::send_async);

TEST_P(SendingForm, SendsTheExactCommand) {
    Client const client;
    EXPECT_EQ(call(client, Inputs(samples(expected().inputs))), KORVO_CORE_STATUS_NO_ERROR);

    Call const sent = onlySent();
    EXPECT_EQ(sent.json, commandOf(expected()));
    EXPECT_EQ(sent.service, Text("action_engine"));
    EXPECT_EQ(sent.target, Text(sample_target));
    EXPECT_EQ(sent.object, client.handle());
    EXPECT_EQ(sent.asynchronous, form() == Form::send_async);
    EXPECT_TRUE(isUuid(sent.request_id.value_or(""))) << sent.request_id.value_or("NULL");
    EXPECT_TRUE(fake_platform::logLines().empty());
    EXPECT_TRUE(context_.calls.empty());
}

TEST_P(SendingForm, PassesANullAndAnEmptyTargetThrough) {
    Client const client;
    EXPECT_EQ(call(client, Inputs(samples(expected().inputs)), nullptr), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(call(client, Inputs(samples(expected().inputs)), ""), KORVO_CORE_STATUS_NO_ERROR);

    std::vector<Call> const sent = fake_platform::calls(Function::send_command);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[0].target, Text());
    EXPECT_EQ(sent[1].target, Text(""));
    for (Call const &received : fake_platform::calls(Function::receive_response)) {
        EXPECT_EQ(received.target.value_or(""), "");
    }
}

TEST_P(SendingForm, MakesAFreshIdentifierForEachRequest) {
    Client const client;
    std::set<std::string> identifiers;
    for (int round = 0; round < 5; ++round) {
        EXPECT_EQ(call(client, Inputs(samples(expected().inputs))), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (Call const &sent : fake_platform::calls(Function::send_command)) {
        EXPECT_TRUE(isUuid(sent.request_id.value_or("")));
        identifiers.insert(sent.request_id.value_or(""));
    }
    EXPECT_EQ(identifiers.size(), 5U);
}

TEST_P(SendingForm, SendsEveryFlagThatIsNotZeroAsTrue) {
    for (std::size_t place = 0; place < expected().inputs.size(); ++place) {
        Member const &input = expected().inputs[place];
        if (input.kind != Kind::flag) {
            continue;
        }
        for (unsigned char const value : std::vector<unsigned char>{0, 1, 2, 255}) {
            Client const client;
            Inputs inputs(samples(expected().inputs));
            inputs.setFlag(place, value);
            EXPECT_EQ(call(client, inputs), KORVO_CORE_STATUS_NO_ERROR);
            EXPECT_EQ(onlySent().json, with(commandOf(expected()), input.name, json::Boolean(value != 0)))
                << input.name << " " << int{value};
        }
    }
}

TEST_P(SendingForm, SendsTheEdgesOfNumbersTextsAndListsExactly) {
    std::string const long_text(65536, 'x');
    std::string const difficult_text = "\"quoted\" \\ \n\t \xC3\xA9\xE2\x82\xAC";
    std::vector<Values> const edges = {
        {0U, 1U, 2147483648U, 4294967295U},
        {},
        {std::string(), difficult_text, long_text},
        {Texts(), Texts{""}, Texts{difficult_text, "", "x"}},
        {Numbers(), Numbers{0}, Numbers{4294967295U, 0, 127}, Numbers(1000, 5)}};
    for (std::size_t place = 0; place < expected().inputs.size(); ++place) {
        Member const &input = expected().inputs[place];
        for (Value const &edge : edges[static_cast<std::size_t>(input.kind)]) {
            Client const client;
            Inputs inputs(samples(expected().inputs));
            inputs.set(place, edge);
            EXPECT_EQ(call(client, inputs), KORVO_CORE_STATUS_NO_ERROR);
            EXPECT_EQ(onlySent().json, with(commandOf(expected()), input.name, toJson(edge))) << input.name;
        }
    }
}

TEST_P(SendingForm, OnlyReadsItsInputs) {
    Client const client;
    Inputs const inputs(samples(expected().inputs));
    EXPECT_EQ(call(client, inputs), KORVO_CORE_STATUS_NO_ERROR);
    // The same row once more: a form that kept, changed or freed it would show now.
    EXPECT_EQ(call(client, inputs), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(fake_platform::calls(Function::send_command).back().json, commandOf(expected()));
}

TEST_P(SendingForm, PassesStatusesOfSendingThrough) {
    for (korvo_core_status const status : failures()) {
        Client const client;
        fake_platform::arrange(Function::send_command, status);
        Outs outs(kinds(expected().results), Outs::Lists::occupied);
        FormCall arguments;
        arguments.context = &context_;

        live_blocks::Recording recording;
        EXPECT_EQ(callForm(client, name(), form(), arguments, Inputs(samples(expected().inputs)), outs),
                  status);
        std::vector<live_blocks::Block> const left = recording.end();
        void const *const address = onlySent().request_id_address;
        EXPECT_EQ(holdsIdentifier(left, address), form() == Form::non_blocking_send)
            << "the request identifier";
        EXPECT_EQ(arguments.request_id, form() == Form::non_blocking_send ? address : nullptr);
        korvo_api_action_engine_free_uuid(arguments.request_id);
        EXPECT_TRUE(outs.untouched());
        EXPECT_TRUE(fake_platform::calls(Function::receive_response).empty());
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_P(SendingForm, TurnsAnExceptionOfSendingIntoStatus4) {
    for (fake_platform::Throw const exception : exceptions()) {
        expectLeftBehind({}, [&] {
            Client const client;
            fake_platform::arrange(Function::send_command, exception);
            Outs outs(kinds(expected().results), Outs::Lists::occupied);
            FormCall arguments;
            arguments.context = &context_;
            EXPECT_EQ(callForm(client, name(), form(), arguments, Inputs(samples(expected().inputs)), outs),
                      KORVO_CORE_STATUS_IPC_FAILED);
            EXPECT_EQ(arguments.request_id != nullptr, form() == Form::non_blocking_send);
            korvo_api_action_engine_free_uuid(arguments.request_id);
            EXPECT_TRUE(outs.untouched());
            EXPECT_TRUE(fake_platform::calls(Function::receive_response).empty());
            EXPECT_TRUE(fake_platform::logLines().empty());
        });
    }
}

class NullInput : public SendingForm {
  protected:
    /// Expects the refusal of NULL inputs of which `first` is the first.
    void expectRefusal(Inputs const &inputs, std::size_t first) {
        expectLeftBehind({}, [&] {
            Client const client;
            Outs outs(kinds(expected().results), Outs::Lists::occupied);
            FormCall arguments;
            arguments.context = &context_;
            EXPECT_EQ(callForm(client, name(), form(), arguments, inputs, outs),
                      KORVO_CORE_STATUS_INVALID_PARAMS);
            EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
            EXPECT_TRUE(fake_platform::calls(Function::receive_response).empty());
            EXPECT_TRUE(outs.untouched());
            Member const &member = expected().inputs[first];
            EXPECT_EQ(
                fake_platform::logLines(),
                client.onlyWarning(std::string(member.kind == Kind::text ? "Initiator: " : "Initiator:") +
                                   expected().builder + " called with null input pointer " + member.name));
            // Two-step callers get an identifier all the same, made before the inputs are looked at.
            EXPECT_EQ(arguments.request_id != nullptr, form() == Form::non_blocking_send);
            korvo_api_action_engine_free_uuid(arguments.request_id);
        });
    }

    std::vector<std::size_t> pointers() const {
        std::vector<std::size_t> places;
        for (std::size_t place = 0; place < expected().inputs.size(); ++place) {
            Kind const kind = expected().inputs[place].kind;
            if (kind != Kind::number && kind != Kind::flag) {
                places.push_back(place);
            }
        }
        return places;
    }
};

INSTANTIATE_TEST_SUITE_P(Client, NullInput,
                         testing::Combine(testing::ValuesIn(operationsWithPointers()),
                                          testing::Values(Form::send, Form::send_with_timeout,
                                                          Form::non_blocking_send, Form::send_async)),
                         nameOfForm);

TEST_P(NullInput, IsRefusedWithItsNameInTheLog) {
    for (std::size_t const place : pointers()) {
        Inputs inputs(samples(expected().inputs));
        inputs.setNull(place);
        expectRefusal(inputs, place);
    }
}

TEST_P(NullInput, IsRefusedForTheFirstOfSeveral) {
    std::vector<std::size_t> const places = pointers();
    for (std::size_t first = 0; first < places.size(); ++first) {
        Inputs inputs(samples(expected().inputs));
        for (std::size_t later = first; later < places.size(); ++later) {
            inputs.setNull(places[later]);
        }
        expectRefusal(inputs, places[first]);
    }
}

TEST_P(NullInput, GivesStatus4WhenTheWarningThrows) {
    for (fake_platform::Throw const exception : exceptions()) {
        expectLeftBehind({}, [&] {
            Client const client;
            fake_platform::arrange(Function::log, exception);
            Inputs inputs(samples(expected().inputs));
            inputs.setNull(pointers().front());
            Outs outs(kinds(expected().results));
            FormCall arguments;
            arguments.context = &context_;
            EXPECT_EQ(callForm(client, name(), form(), arguments, inputs, outs),
                      KORVO_CORE_STATUS_IPC_FAILED);
            EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
            korvo_api_action_engine_free_uuid(arguments.request_id);
        });
    }
}

TEST(ContractTable, HoldsTheOperationsThatTakeTextsOrLists) {
    // At least creating and modifying ten kinds of actions and three of triggers, set_action_filters and onvif_event.
    EXPECT_GE(operationsWithPointers().size(), 28U);
}

class TwoStepSending : public EveryOperation {};
FOR_EVERY_OPERATION(TwoStepSending);

TEST_P(TwoStepSending, RefusesANullPlaceForTheIdentifierBeforeAnythingElse) {
    Client const client;
    Inputs inputs(samples(expected().inputs));
    for (std::size_t place = 0; place < expected().inputs.size(); ++place) {
        if (expected().inputs[place].kind != Kind::number && expected().inputs[place].kind != Kind::flag) {
            inputs.setNull(place);
        }
    }
    EXPECT_EQ(operation(name()).nonBlockingSend(client.handle(), sample_target, nullptr, inputs),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
    EXPECT_TRUE(fake_platform::logLines().empty());
}

TEST_P(TwoStepSending, HandsOutTheIdentifierThatItSent) {
    Client const client;
    char *request_id = nullptr;
    EXPECT_EQ(operation(name()).nonBlockingSend(client.handle(), sample_target, &request_id,
                                                Inputs(samples(expected().inputs))),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_NE(request_id, nullptr);
    auto const sent = fake_platform::calls(Function::send_command);
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent.front().request_id, Text(request_id));
    EXPECT_EQ(sent.front().request_id_address, request_id);
    korvo_api_action_engine_free_uuid(request_id);
}

TEST_P(TwoStepSending, NeverAsksForResponses) {
    Client const client;
    char *request_id = nullptr;
    EXPECT_EQ(operation(name()).nonBlockingSend(client.handle(), sample_target, &request_id,
                                                Inputs(samples(expected().inputs))),
              KORVO_CORE_STATUS_NO_ERROR);
    korvo_api_action_engine_free_uuid(request_id);
    EXPECT_TRUE(fake_platform::calls(Function::receive_response).empty());
    EXPECT_TRUE(fake_platform::calls(Function::response_receive_callback).empty());
}

class AsynchronousSending : public EveryOperation {
  protected:
    Context context_;
};
FOR_EVERY_OPERATION(AsynchronousSending);

TEST_P(AsynchronousSending, RegistersTheLibrarysEntryPointBeforeEachSending) {
    Client const client;
    (void)sendAsync(client, name(), Callback::first, context_);
    (void)sendAsync(client, name(), Callback::first, context_);

    std::vector<Call> const calls = fake_platform::calls();
    ASSERT_EQ(calls.size(), 5U);
    EXPECT_EQ(calls[0].function, Function::initiator_init);
    for (std::size_t const place : {1U, 3U}) {
        EXPECT_EQ(calls[place].function, Function::response_receive_callback);
        EXPECT_EQ(calls[place].object, client.handle());
        EXPECT_EQ(calls[place].messaging, calls[place + 1].messaging);
        EXPECT_EQ(calls[place + 1].function, Function::send_command);
    }
}

TEST_P(AsynchronousSending, PassesStatusesOfTheEntryPointsRegistrationThroughAndSendsNothing) {
    for (korvo_core_status const status : failures()) {
        Client const client;
        fake_platform::arrange(Function::response_receive_callback, status);
        EXPECT_EQ(operation(name()).sendAsync(client.handle(), sample_target,
                                              Inputs(samples(expected().inputs)), Callback::first, &context_),
                  status);
        EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_P(AsynchronousSending, TurnsAnExceptionOfTheEntryPointsRegistrationIntoStatus4) {
    for (fake_platform::Throw const exception : exceptions()) {
        Client const client;
        fake_platform::arrange(Function::response_receive_callback, exception);
        EXPECT_EQ(operation(name()).sendAsync(client.handle(), sample_target,
                                              Inputs(samples(expected().inputs)), Callback::first, &context_),
                  KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
    }
}

TEST_P(AsynchronousSending, ReleasesItsMutexHoweverItEnds) {
    Client const client;
    fake_platform::arrange(Function::send_command, fake_platform::Throw::number, 1);
    fake_platform::arrange(Function::send_command, KORVO_CORE_STATUS_DISABLED_TARGET, 2);
    (void)sendAsync(client, name(), Callback::first, context_, KORVO_CORE_STATUS_IPC_FAILED);
    (void)sendAsync(client, name(), Callback::first, context_, KORVO_CORE_STATUS_DISABLED_TARGET);
    // A mutex that this thread still held would make these fail with 4.
    (void)sendAsync(client, name(), Callback::first, context_);
    EXPECT_EQ(operation(name()).cancelAsync(client.handle(), Callback::second, &context_),
              KORVO_CORE_STATUS_NO_ERROR);
}
