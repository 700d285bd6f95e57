// SPDX-License-Identifier: Apache-2.0
// What the client tells a libkorvo-interfaces that asks whether a command is asynchronous, above all after an
// asynchronous form that ended before it sent anything; and that one which never asks is served as well.

#include <functional>
#include <thread>

#include "client_test.h"

using fake_platform::Call;
using fake_platform::Function;

namespace {

/// Whether the commands so far were asynchronous, in their order: a for each that was, s for each that was not.
std::string commandsSent() {
    std::string kinds;
    for (Call const &call : fake_platform::calls(Function::send_command)) {
        kinds += call.asynchronous ? 'a' : 's';
    }
    return kinds;
}

void ignoreCreated(char *, korvo_core_status, unsigned int, void *) {}

korvo_core_status createWithoutName(Client const &client) {
    return korvo_api_action_engine_create_wiper_action_send_async(client.handle(), nullptr, nullptr,
                                                                  ignoreCreated, nullptr);
}

korvo_core_status create(Client const &client) {
    return korvo_api_action_engine_create_wiper_action_send_async(client.handle(), nullptr, "wipe",
                                                                  ignoreCreated, nullptr);
}

/// A synchronous exchange, the first half of one, and an asynchronous call, of the same operation and of another.
void sendOneOfEach(Client const &client) {
    char *request_id = nullptr;
    unsigned int action_id = 0;
    fake_platform::respond(responseOf(expectation("create_wiper_action")));
    EXPECT_EQ(korvo_api_action_engine_create_wiper_action_send(client.handle(), nullptr, "wipe", &action_id),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine_create_wiper_action_non_blocking_send(client.handle(), nullptr,
                                                                            &request_id, "wipe"),
              KORVO_CORE_STATUS_NO_ERROR);
    korvo_api_action_engine_free_uuid(request_id);
    EXPECT_EQ(korvo_api_action_engine_get_actions_non_blocking_send(client.handle(), nullptr, &request_id),
              KORVO_CORE_STATUS_NO_ERROR);
    korvo_api_action_engine_free_uuid(request_id);
    EXPECT_EQ(korvo_api_action_engine_get_actions_send_async(client.handle(), nullptr, nullptr, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(create(client), KORVO_CORE_STATUS_NO_ERROR);
}

constexpr char const *one_of_each = "sssaa";

}  // namespace

class AfterAnEarlyEnd : public testing::Test {
  protected:
    void SetUp() override { fake_platform::script(); }
    void TearDown() override { EXPECT_EQ(fake_platform::openMessagingHandles(), 0U); }
};

TEST_F(AfterAnEarlyEnd, CommandsAreWhatTheyAreWhenAnInputWasNull) {
    Client const client;
    EXPECT_EQ(createWithoutName(client), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(createWithoutName(client), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(commandsSent(), "");
    sendOneOfEach(client);
    EXPECT_EQ(commandsSent(), one_of_each);
}

TEST_F(AfterAnEarlyEnd, CommandsAreWhatTheyAreWhenTheEntryWasRefused) {
    Client const client;
    fake_platform::arrange(Function::response_receive_callback, KORVO_CORE_STATUS_DISABLED_TARGET, 1);
    fake_platform::arrange(Function::response_receive_callback, fake_platform::Throw::standard_exception, 2);
    EXPECT_EQ(create(client), KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(create(client), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(commandsSent(), "");
    sendOneOfEach(client);
    EXPECT_EQ(commandsSent(), one_of_each);
}

TEST_F(AfterAnEarlyEnd, CommandsAreWhatTheyAreWhenAnExceptionCameBetween) {
    for (fake_platform::Throw const exception : exceptions()) {
        fake_platform::script();
        Client const client;
        // The line about the NULL input comes when the call is registered already.
        fake_platform::arrange(Function::log, exception, 1);
        EXPECT_EQ(createWithoutName(client), KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_EQ(commandsSent(), "");
        sendOneOfEach(client);
        EXPECT_EQ(commandsSent(), one_of_each);
    }
}

TEST_F(AfterAnEarlyEnd, CommandsAreWhatTheyAreWhenTheSendingItselfFailed) {
    Client const client;
    fake_platform::arrange(Function::send_command, KORVO_CORE_STATUS_DISABLED_TARGET, 1);
    fake_platform::arrange(Function::send_command, fake_platform::Throw::number, 2);
    EXPECT_EQ(create(client), KORVO_CORE_STATUS_DISABLED_TARGET);
    EXPECT_EQ(create(client), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(commandsSent(), "aa");
    sendOneOfEach(client);
    EXPECT_EQ(commandsSent(), std::string("aa") + one_of_each);
}

TEST_F(AfterAnEarlyEnd, CommandsAreWhatTheyAreInsideACallback) {
    Client const client;
    Context context;
    std::string const request_id = sendAsync(client, "get_actions", Callback::first, context);
    context.during = [&] {
        // The callback's own operation cannot be started here; what it starts instead is no less synchronous.
        EXPECT_EQ(korvo_api_action_engine_get_actions_send_async(client.handle(), nullptr, nullptr, nullptr),
                  KORVO_CORE_STATUS_IPC_FAILED);
        char *identifier = nullptr;
        EXPECT_EQ(
            korvo_api_action_engine_get_actions_non_blocking_send(client.handle(), nullptr, &identifier),
            KORVO_CORE_STATUS_NO_ERROR);
        korvo_api_action_engine_free_uuid(identifier);
        EXPECT_EQ(create(client), KORVO_CORE_STATUS_NO_ERROR);
    };
    fake_platform::deliverResponse(sample_target, request_id, responseOf(expectation("get_actions")));
    EXPECT_EQ(context.calls.size(), 1U);
    EXPECT_EQ(commandsSent(), "asa");
    sendOneOfEach(client);
    EXPECT_EQ(commandsSent(), std::string("asa") + one_of_each);
}

TEST_F(AfterAnEarlyEnd, CommandsOfOtherThreadsAreWhatTheyAre) {
    Client const client;
    EXPECT_EQ(createWithoutName(client), KORVO_CORE_STATUS_INVALID_PARAMS);
    std::thread([&] { sendOneOfEach(client); }).join();
    EXPECT_EQ(commandsSent(), one_of_each);
}

TEST_F(AfterAnEarlyEnd, APlatformThatNeverAsksIsServedTheSameWay) {
    Client const client;
    fake_platform::neverAsk();
    EXPECT_EQ(createWithoutName(client), KORVO_CORE_STATUS_INVALID_PARAMS);
    sendOneOfEach(client);
    // Nothing was asked, so nothing was said.
    EXPECT_EQ(commandsSent(), "sssss");
    Context context;
    std::string const request_id = sendAsync(client, "get_actions", Callback::first, context);
    fake_platform::deliverResponse(sample_target, request_id, responseOf(expectation("get_actions")));
    EXPECT_EQ(context.calls.size(), 1U);
}
