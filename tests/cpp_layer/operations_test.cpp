// SPDX-License-Identifier: Apache-2.0
// Every operation in every form: the command that goes out, and what becomes of the answers.
#include "cpp_layer/support/operations.h"
#include "cpp_layer/support/matched.h"

#include "cpp_layer/support/engine_test.h"
#include "json_printing.h"
#include "typed_calls/operation_names.h"

namespace cpp_layer {
namespace {

using typed_calls::Values;

constexpr milliseconds sample_timeout{61'234};

enum class Form { call, future, async };

class EveryOperation : public EngineTest, public ::testing::WithParamInterface<char const *> {
  protected:
    std::string name() const { return GetParam(); }
    Expectation expected() const { return matched(expectation(name())); }

    /// Makes a call whose response is this one.
    Outcome run(Form form, json::Object const &response) {
        korvo::ActionEngine const engine = open();
        Operation const &operation = operations().at(name());
        Values const inputs = samples(expected().inputs);
        switch (form) {
            case Form::call:
                fake_platform::respond(response);
                return operation.call(engine, inputs, sample_timeout);
            case Form::future: {
                std::function<Outcome()> const wait = operation.future(engine, inputs, sample_timeout);
                fake_platform::deliverResponse("camera-1", lastRequest(), response);
                return wait();
            }
            case Form::async:
                break;
        }
        Outcome told;
        Signal done;
        korvo::PendingCall const call =
            operation.async(engine, inputs, sample_timeout, [&](Outcome const &outcome) {
                told = outcome;
                done.give();
            });
        // Twice, of which one reaches nobody.
        fake_platform::deliverResponse("camera-1", lastRequest(), response);
        fake_platform::deliverResponse("camera-1", lastRequest(), response);
        EXPECT_TRUE(done.wait());
        settle(engine);
        EXPECT_EQ(done.given(), 1);
        return told;
    }
};

#define NAME(name) #name,
INSTANTIATE_TEST_SUITE_P(, EveryOperation, ::testing::Values(OPERATION_NAMES(NAME) "get_actions"),
                         [](auto const &tested) {
                             return std::string(tested.param) + "_" + std::to_string(tested.index);
                         });
#undef NAME

TEST_P(EveryOperation, SendsItsInputsAndGivesItsResults) {
    for (Form const form : {Form::call, Form::future, Form::async}) {
        fake_platform::script();
        Outcome const outcome = run(form, responseOf(expected()));
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(outcome.message, "");
        EXPECT_EQ(outcome.values, samples(expected().results));
        fake_platform::Call const sent = fake_platform::calls(Function::send_command).front();
        EXPECT_EQ(sent.json, commandOf(expected()));
        EXPECT_EQ(sent.target, fake_platform::Text("camera-1"));
        if (form == Form::call) {
            EXPECT_EQ(fake_platform::calls(Function::receive_response).front().number,
                      sample_timeout.count());
        }
    }
}

TEST_P(EveryOperation, GivesTheStatusOfARefusal) {
    json::Object refusal;
    refusal["command"] = json::String(expected().method);
    refusal["status"] = json::Number(9);
    for (Form const form : {Form::call, Form::future, Form::async}) {
        fake_platform::script();
        // What a waiting receive gives, beside the response that a callback gets.
        fake_platform::arrange(Function::receive_response, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
        Outcome const outcome = run(form, refusal);
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
        EXPECT_EQ(outcome.message.find(name() + ": status 9 ("), 0U) << outcome.message;
    }
}

TEST_P(EveryOperation, GivesTheStatusOfAFailedSending) {
    korvo::ActionEngine const engine = open();
    Operation const &operation = operations().at(name());
    Values const inputs = samples(expected().inputs);
    fake_platform::arrange(Function::send_command, KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(operation.call(engine, inputs, sample_timeout).status, KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(operation.future(engine, inputs, sample_timeout)().status, KORVO_CORE_STATUS_DISABLED_TARGET);
    Outcome told;
    Signal done;
    korvo::PendingCall const call =
        operation.async(engine, inputs, sample_timeout, [&](Outcome const &outcome) {
            told = outcome;
            done.give();
        });
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(told.status, KORVO_CORE_STATUS_DISABLED_TARGET);
}

TEST_P(EveryOperation, RefusesATextThatWouldArriveCutOff) {
    korvo::ActionEngine const engine = open();
    Operation const &operation = operations().at(name());
    for (std::size_t place = 0; place < expected().inputs.size(); ++place) {
        Values inputs = samples(expected().inputs);
        std::string const cut("a\0b", 3);
        if (auto *const text = std::get_if<std::string>(&inputs[place])) {
            *text = cut;
        } else if (auto *const texts = std::get_if<Texts>(&inputs[place])) {
            texts->back() = cut;
        } else {
            continue;
        }
        Outcome const outcome = operation.call(engine, inputs, sample_timeout);
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_INVALID_PARAMS) << expected().inputs[place].name;
        EXPECT_NE(outcome.message.find("zero byte"), std::string::npos) << outcome.message;
        EXPECT_EQ(operation.future(engine, inputs, sample_timeout)().status,
                  KORVO_CORE_STATUS_INVALID_PARAMS);
    }
    EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
}

TEST(Operations, AreAllThere) {
    EXPECT_EQ(operations().size(), 54U);
    for (Expectation const &expected : expectations()) {
        EXPECT_EQ(operations().count(expected.operation), 1U) << expected.operation;
    }
}

class VersionQuery : public EngineTest {};

TEST_F(VersionQuery, GivesTheVersionOfTheService) {
    json::Object response;
    response["command"] = json::String("__get_target_version__");
    response["status"] = json::Number(0);
    response["target_major"] = json::Number(1);
    response["target_minor"] = json::Number(19);
    korvo::ActionEngine const engine = open();
    fake_platform::respond(response);
    korvo::TargetVersion const version = engine.get_target_version().value();
    EXPECT_EQ(version.target_major, 1U);
    EXPECT_EQ(version.target_minor, 19U);
    auto future = engine.get_target_version_future();
    fake_platform::deliverResponse("camera-1", lastRequest(), response);
    EXPECT_EQ(future.get().value().target_minor, 19U);
}

class Lists : public EngineTest {};

TEST_F(Lists, OfDifferentLengthAreNoListOfEntries) {
    json::Object response = responseOf(expectation("get_actions"));
    json::Array longer;
    for (int n = 0; n < 5; ++n) {
        longer.Emplace(json::Number(n));
    }
    response["action_type"] = longer;
    korvo::ActionEngine const engine = open();
    fake_platform::respond(response);
    Actions const result = engine.get_actions();
    EXPECT_EQ(result.status(), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_NE(result.message().find("differ in length"), std::string::npos) << result.message();
    auto future = engine.get_actions_future();
    fake_platform::deliverResponse("camera-1", lastRequest(), response);
    EXPECT_EQ(future.get().status(), KORVO_CORE_STATUS_IPC_FAILED);
}

}  // namespace
}  // namespace cpp_layer
