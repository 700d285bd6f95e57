// SPDX-License-Identifier: Apache-2.0
// The version handshake, which has five forms and looks at what it reads.

#include <map>

#include "client_test.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::Text;

namespace {

constexpr char const *method = "__get_target_version__";

struct VersionCall {
    Text target;
    korvo_core_status status;
    unsigned int major;
    unsigned int minor;
};

struct VersionContext {
    std::vector<VersionCall> calls;
    void *handle = nullptr;
    bool calls_back_in = false;
};

void record(char *target, korvo_core_status status, unsigned int major, unsigned int minor, void *context) {
    VersionContext &record_of_calls = *static_cast<VersionContext *>(context);
    record_of_calls.calls.push_back({target != nullptr ? Text(target) : Text(), status, major, minor});
    if (record_of_calls.calls_back_in) {
        EXPECT_EQ(korvo_api_action_engine___get_target_version___send_async(record_of_calls.handle,
                                                                            sample_target, record, context),
                  KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_EQ(korvo_api_action_engine___get_target_version___cancel_async(record_of_calls.handle, record,
                                                                              context),
                  KORVO_CORE_STATUS_IPC_FAILED);
    }
}

json::Object command() {
    json::Object object;
    object.Insert({"command", json::String(method)});
    object.Insert({"initiator_major", json::Number(1)});
    object.Insert({"initiator_minor", json::Number(19)});
    return object;
}

json::Object response(double major, double minor) {
    json::Object object;
    object.Insert({"command", json::String(method)});
    object.Insert({"status", json::Number(0)});
    object.Insert({"target_major", json::Number(major)});
    object.Insert({"target_minor", json::Number(minor)});
    return object;
}

std::string mismatch(std::string const &target) {
    return "Action_engine Initiator (version 1:19) queried Target (version " + target + ")";
}

/// What a reader makes of a response: versions, and the version in the line, empty for none.
struct Reading {
    json::Object response;
    unsigned int major;
    unsigned int minor;
    std::string line;
};

std::vector<Reading> readings() {
    return {{response(1, 19), 1, 19, ""},
            {response(1.9, 19.9), 1, 19, ""},
            {response(1, 20), 1, 20, "1:20"},
            {response(2, 19), 2, 19, "2:19"},
            {response(19, 1), 19, 1, "19:1"},
            {response(0, 0), 0, 0, "0:0"},
            {response(-1, 4294967296.0), 0, 4294967295U, "0:-1"}};
}

/// Readings that only the inserting access makes.
std::vector<Reading> lenientReadings() {
    return {{without(response(1, 19), "target_major"), 0, 19, "0:19"},
            {without(response(1, 19), "target_minor"), 1, 0, "1:0"},
            {with(response(1, 19), "target_major", json::String("1")), 0, 19, "0:19"},
            {with(response(1, 19), "target_minor", json::Null()), 1, 0, "1:0"},
            {json::Object(), 0, 0, "0:0"}};
}

}  // namespace

class VersionQuery : public testing::Test {
  protected:
    void SetUp() override { fake_platform::script(); }
    void TearDown() override { EXPECT_EQ(fake_platform::openMessagingHandles(), 0U); }

    std::string sendAsync(Client const &client, VersionContext &context) {
        context.handle = client.handle();
        EXPECT_EQ(korvo_api_action_engine___get_target_version___send_async(client.handle(), sample_target,
                                                                            record, &context),
                  KORVO_CORE_STATUS_NO_ERROR);
        return fake_platform::calls(Function::send_command).back().request_id.value_or("");
    }

    unsigned int major_ = 77;
    unsigned int minor_ = 78;
};

class VersionQuerySending : public VersionQuery, public testing::WithParamInterface<Form> {
  protected:
    korvo_core_status call(Client const &client, char const *target = sample_target) {
        if (GetParam() == Form::send) {
            return korvo_api_action_engine___get_target_version___send(client.handle(), target, &major_,
                                                                       &minor_);
        }
        if (GetParam() == Form::send_async) {
            return korvo_api_action_engine___get_target_version___send_async(client.handle(), target, record,
                                                                             &context_);
        }
        char *request_id = nullptr;
        korvo_core_status const status = korvo_api_action_engine___get_target_version___non_blocking_send(
            client.handle(), target, &request_id);
        EXPECT_NE(request_id, nullptr);
        korvo_api_action_engine_free_uuid(request_id);
        return status;
    }

    VersionContext context_;
};
INSTANTIATE_TEST_SUITE_P(Client, VersionQuerySending,
                         testing::Values(Form::send, Form::non_blocking_send, Form::send_async),
                         [](testing::TestParamInfo<Form> const &instance) {
                             return std::string(nameOf(instance.param));
                         });

TEST_P(VersionQuerySending, SendsTheInitiatorsVersion) {
    for (char const *target : {sample_target, static_cast<char const *>(nullptr)}) {
        Client const client;
        fake_platform::respond(response(1, 19));
        EXPECT_EQ(call(client, target), KORVO_CORE_STATUS_NO_ERROR);
        std::vector<Call> const sent = fake_platform::calls(Function::send_command);
        ASSERT_EQ(sent.size(), 1U);
        EXPECT_EQ(sent[0].json, command());
        EXPECT_EQ(sent[0].service, Text("action_engine"));
        EXPECT_EQ(sent[0].target, target != nullptr ? Text(target) : Text());
        EXPECT_TRUE(isUuid(sent[0].request_id.value_or("")));
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_P(VersionQuerySending, PassesStatusesThroughAndTurnsExceptionsInto4) {
    for (korvo_core_status const status : failures()) {
        Client const client;
        fake_platform::arrange(Function::send_command, status);
        EXPECT_EQ(call(client), status);
    }
    for (fake_platform::Throw const exception : exceptions()) {
        expectLeftBehind({}, [&] {
            Client const client;
            fake_platform::arrange(Function::send_command, exception);
            EXPECT_EQ(call(client), KORVO_CORE_STATUS_IPC_FAILED);
        });
    }
    EXPECT_EQ(major_, 77U);
    EXPECT_EQ(minor_, 78U);
}

/// The forms that read: `send`, and `receive` with an identifier.
class VersionQueryReading : public VersionQuery, public testing::WithParamInterface<Form> {
  protected:
    korvo_core_status call(Client const &client, bool &identifier_freed, unsigned char block = 1) {
        live_blocks::Recording recording;
        void const *address = nullptr;
        korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
        char *request_id = nullptr;
        if (GetParam() == Form::send) {
            status = korvo_api_action_engine___get_target_version___send(client.handle(), sample_target,
                                                                         &major_, &minor_);
        } else {
            request_id = strdup(sample_request_id);
            address = request_id;
            status = korvo_api_action_engine___get_target_version___receive(
                client.handle(), block, sample_target, request_id, &major_, &minor_);
        }
        std::vector<live_blocks::Block> const left = recording.end();
        if (GetParam() == Form::send) {
            address = fake_platform::calls(Function::send_command).back().request_id_address;
        }
        identifier_freed = !holdsIdentifier(left, address);
        if (!identifier_freed) {
            korvo_api_action_engine_free_uuid(request_id);
        }
        return status;
    }

    bool freedOnFailure() const { return GetParam() == Form::send; }
};
INSTANTIATE_TEST_SUITE_P(Client, VersionQueryReading, testing::Values(Form::send, Form::receive),
                         [](testing::TestParamInfo<Form> const &instance) {
                             return std::string(nameOf(instance.param));
                         });

TEST_P(VersionQueryReading, LogsAMismatchAndNothingElseAndSucceeds) {
    std::vector<Reading> all = readings();
    std::vector<Reading> const lenient = lenientReadings();
    all.insert(all.end(), lenient.begin(), lenient.end());
    for (Reading const &reading : all) {
        Client const client;
        fake_platform::respond(reading.response);
        bool identifier_freed = false;
        EXPECT_EQ(call(client, identifier_freed), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_TRUE(identifier_freed);
        EXPECT_EQ(major_, reading.major);
        EXPECT_EQ(minor_, reading.minor);
        EXPECT_EQ(fake_platform::logLines(), reading.line.empty() ? std::vector<fake_platform::LogLine>()
                                                                  : client.onlyError(mismatch(reading.line)));
    }
}

TEST_P(VersionQueryReading, WaitsForItsOwnResponse) {
    for (unsigned char const block : std::vector<unsigned char>{0, 1, 2}) {
        Client const client;
        fake_platform::respond(response(1, 19));
        bool identifier_freed = false;
        EXPECT_EQ(call(client, identifier_freed, block), KORVO_CORE_STATUS_NO_ERROR);
        std::vector<Call> const received = fake_platform::calls(Function::receive_response);
        ASSERT_EQ(received.size(), 1U);
        EXPECT_EQ(received[0].method, Text(method));
        EXPECT_EQ(received[0].service, Text("action_engine"));
        EXPECT_EQ(received[0].target, Text(sample_target));
        EXPECT_EQ(received[0].number, GetParam() == Form::receive && block == 0 ? 0 : 5000);
    }
}

TEST_P(VersionQueryReading, PassesStatusesThroughAndWritesNothing) {
    for (korvo_core_status const status : failures()) {
        Client const client;
        fake_platform::arrange(Function::receive_response, status);
        bool identifier_freed = false;
        EXPECT_EQ(call(client, identifier_freed), status);
        EXPECT_EQ(identifier_freed, freedOnFailure());
    }
    for (fake_platform::Throw const exception : exceptions()) {
        Client const client;
        fake_platform::arrange(Function::receive_response, exception);
        bool identifier_freed = false;
        EXPECT_EQ(call(client, identifier_freed), KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_EQ(identifier_freed, freedOnFailure());
    }
    EXPECT_EQ(major_, 77U);
    EXPECT_EQ(minor_, 78U);
}

TEST_P(VersionQueryReading, EndsIn4AndLeavesTheIdentifierToOneOwnerWhenTheLogThrows) {
    for (fake_platform::Throw const exception : exceptions()) {
        Client const client;
        fake_platform::respond(response(1, 20));
        fake_platform::arrange(Function::log, exception);
        bool identifier_freed = false;
        EXPECT_EQ(call(client, identifier_freed), KORVO_CORE_STATUS_IPC_FAILED);
        // As after every failure: whoever made the identifier still has it, and frees it once.
        EXPECT_EQ(identifier_freed, freedOnFailure());
        EXPECT_EQ(major_, 1U);
        EXPECT_EQ(minor_, 20U);
    }
}

TEST_F(VersionQuery, RefusesANullPlaceForTheIdentifier) {
    Client const client;
    EXPECT_EQ(korvo_api_action_engine___get_target_version___non_blocking_send(client.handle(), sample_target,
                                                                               nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
}

TEST_F(VersionQuery, CanReceiveAgainAfterAFailure) {
    Client const client;
    char *request_id = nullptr;
    ASSERT_EQ(korvo_api_action_engine___get_target_version___non_blocking_send(client.handle(), sample_target,
                                                                               &request_id),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_api_action_engine___get_target_version___receive(client.handle(), 0, sample_target,
                                                                     request_id, &major_, &minor_),
              KORVO_CORE_STATUS_IPC_FAILED);
    fake_platform::respond(response(1, 19));
    EXPECT_EQ(korvo_api_action_engine___get_target_version___receive(client.handle(), 0, sample_target,
                                                                     request_id, &major_, &minor_),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(major_, 1U);
    EXPECT_EQ(minor_, 19U);
}

TEST_F(VersionQuery, CallsBackWithTheVersionsAfterLoggingAMismatch) {
    for (Reading const &reading : readings()) {
        Client const client;
        VersionContext context;
        std::string const request_id = sendAsync(client, context);
        fake_platform::deliverResponse("answering", request_id, reading.response);
        ASSERT_EQ(context.calls.size(), 1U);
        EXPECT_EQ(context.calls[0].target, Text("answering"));
        EXPECT_EQ(context.calls[0].status, KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(context.calls[0].major, reading.major);
        EXPECT_EQ(context.calls[0].minor, reading.minor);
        EXPECT_EQ(fake_platform::logLines(), reading.line.empty() ? std::vector<fake_platform::LogLine>()
                                                                  : client.onlyError(mismatch(reading.line)));
    }
}

TEST_F(VersionQuery, LogsAMismatchAlsoWhenNobodyIsCalledBack) {
    for (Reading const &reading : readings()) {
        Client const client;
        EXPECT_EQ(korvo_api_action_engine___get_target_version___send_async(client.handle(), sample_target,
                                                                            nullptr, nullptr),
                  KORVO_CORE_STATUS_NO_ERROR);
        std::string const request_id =
            fake_platform::calls(Function::send_command).back().request_id.value_or("");
        fake_platform::deliverResponse("answering", request_id,
                                       with(reading.response, "status", json::Number(9)));
        EXPECT_TRUE(fake_platform::logLines().empty());
        fake_platform::deliverResponse("answering", request_id, reading.response);
        EXPECT_EQ(fake_platform::logLines(), reading.line.empty() ? std::vector<fake_platform::LogLine>()
                                                                  : client.onlyError(mismatch(reading.line)));
    }
}

TEST_F(VersionQuery, CallsBackWithZeroVersionsForAStatusThatIsNotZero) {
    for (korvo_core_status const status : failures()) {
        Client const client;
        VersionContext context;
        std::string const request_id = sendAsync(client, context);
        fake_platform::deliverResponse(sample_target, request_id,
                                       with(response(2, 3), "status", json::Number(status)));
        ASSERT_EQ(context.calls.size(), 1U);
        EXPECT_EQ(context.calls[0].status, status);
        EXPECT_EQ(context.calls[0].major, 0U);
        EXPECT_EQ(context.calls[0].minor, 0U);
        EXPECT_TRUE(fake_platform::logLines().empty());
    }
}

TEST_F(VersionQuery, LogsAResponseThatItCannotRead) {
    std::vector<json::Object> unreadable = {
        without(response(1, 19), "status"), without(response(1, 19), "target_major"),
        without(response(1, 19), "target_minor"), with(response(1, 19), "target_major", json::String("1"))};
    for (json::Object const &broken : unreadable) {
        Client const client;
        VersionContext context;
        std::string const request_id = sendAsync(client, context);
        fake_platform::deliverResponse(sample_target, request_id, broken);
        EXPECT_TRUE(context.calls.empty());
        EXPECT_EQ(
            fake_platform::logLines(),
            client.onlyError("Threw an exception in function action_engine__get_target_version__Callback"));
        fake_platform::deliverResponse(sample_target, request_id, response(1, 19));
        EXPECT_EQ(context.calls.size(), 1U);
    }
}

TEST_F(VersionQuery, LogsAResponseThatNobodyAskedFor) {
    Client const client;
    VersionContext context;
    (void)sendAsync(client, context);
    fake_platform::deliverResponse(sample_target, sample_request_id, response(1, 20));
    EXPECT_TRUE(context.calls.empty());
    EXPECT_EQ(fake_platform::logLines(),
              client.onlyWarning(
                  "received a callback for __get_target_version__ but no initiator callback was registered"));
}

TEST_F(VersionQuery, HoldsItsMutexDuringTheCallback) {
    Client const client;
    VersionContext context;
    context.calls_back_in = true;
    std::string const request_id = sendAsync(client, context);
    fake_platform::deliverResponse(sample_target, request_id, response(1, 19));
    EXPECT_EQ(context.calls.size(), 1U);
}

TEST_F(VersionQuery, CancelDropsTheRegistrationBehindTheMatch) {
    Client const client;
    std::map<std::string, VersionContext *> by_identifier;
    VersionContext contexts[3];
    for (VersionContext &context : contexts) {
        by_identifier[sendAsync(client, context)] = &context;
    }
    VersionContext *const first = by_identifier.begin()->second;
    EXPECT_EQ(korvo_api_action_engine___get_target_version___cancel_async(client.handle(), record, first),
              KORVO_CORE_STATUS_NO_ERROR);
    std::string alive;
    for (auto const &[request_id, context] : by_identifier) {
        fake_platform::deliverResponse(sample_target, request_id, response(1, 19));
        alive += context->calls.empty() ? '-' : 'x';
    }
    EXPECT_EQ(alive, "x-x");
}
