// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CONTRACT_CLIENT_TEST_H
#define KORVO_TESTS_CONTRACT_CLIENT_TEST_H

// What the tests of the client library on the fake platform share.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "client_handle.h"
#include "expectations.h"
#include "fake_platform/fake_platform.h"
#include "json_printing.h"
#include "korvo_api_action_engine.h"
#include "live_blocks/live_blocks.h"
#include "typed_calls/operation.h"

using typed_calls::Callback;
using typed_calls::Form;
using typed_calls::Inputs;
using typed_calls::Operation;
using typed_calls::operation;
using typed_calls::operations;
using typed_calls::Outs;
using typed_calls::Value;
using typed_calls::Values;

constexpr char const *sample_target = "camera-1";

/// An identifier for the receive forms, which takes no part in anything else.
constexpr char const *sample_request_id = "0b5e55ed-1dea-4b1d-8bad-decaf0c0ffee";

/// All statuses that a platform may report, and one that no name stands for.
std::vector<korvo_core_status> const &failures();

/// All ways in which a platform may throw.
std::vector<fake_platform::Throw> const &exceptions();

/// A random (version 4) UUID in its canonical text form, lower case.
bool isUuid(std::string const &text);

/// One value of each JSON type but the kind's own.
std::vector<json::UnknownElement> mistyped(Kind kind);

/// What is no text or number, for the elements of a list of such.
std::vector<json::UnknownElement> mistypedElements(Kind kind);

/// How doubles read as unsigned numbers.
struct Conversion {
    double json;
    unsigned int read;
};
std::vector<Conversion> const &conversions();

/// The response without a member, or with another element in its place.
json::Object without(json::Object const &response, std::string const &name);
json::Object with(json::Object const &response, std::string const &name, json::UnknownElement const &element);

/// A handle of its own on the fake platform in scripted mode, which is closed without leaving anything open.
class Client {
  public:
    explicit Client(unsigned char subscribe_events = 0);
    ~Client();
    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    void *handle() const { return client_.handle(); }
    fake_platform::LogLine warning(std::string const &text) const { return {client_.logging(), 4, text}; }
    fake_platform::LogLine error(std::string const &text) const { return {client_.logging(), 3, text}; }

    /// Lines expected alone.
    std::vector<fake_platform::LogLine> onlyWarning(std::string const &text) const { return {warning(text)}; }
    std::vector<fake_platform::LogLine> onlyError(std::string const &text) const { return {error(text)}; }

  private:
    ClientHandle client_;
};

/// What a callback was told.
struct CallbackCall {
    std::optional<std::string> target;
    korvo_core_status status;
    Values results;
    int callback;
};

/// The context of an asynchronous call, and what its callback does.
class Context : public typed_calls::Receiver {
  public:
    std::vector<CallbackCall> calls;
    /// Runs inside the callback, before it takes its texts and lists.
    std::function<void()> during;
    /// The callback throws a number at its end.
    bool throws = false;

    void entered() override;
    void called(char const *target, korvo_core_status status, Values results, int callback) override;
};

/// A call of one form with sample inputs. What is left at its default need not be given.
struct FormCall {
    char const *target = sample_target;
    int timeout = 1234;
    unsigned char block = 1;
    char *request_id = nullptr;
    Callback callback = Callback::first;
    Context *context = nullptr;
};

/// Calls the form. For non_blocking_send, call.request_id receives the identifier.
korvo_core_status callForm(Client const &client, std::string const &name, Form form, FormCall &call,
                           Inputs const &inputs, Outs &outs);

/// Sends asynchronously with sample inputs and gives the request's identifier.
std::string sendAsync(Client const &client, std::string const &name, Callback callback, Context &context,
                      korvo_core_status expected = KORVO_CORE_STATUS_NO_ERROR);

/// Does the form make the request (and with it the identifier)? Does it read a response?
bool sends(Form form);
bool receives(Form form);

/// Is the request identifier at this address among the blocks that are left? (Another block may have taken
/// its place.)
bool holdsIdentifier(std::vector<live_blocks::Block> const &left, void const *address);

/// Makes what is made once, on first use, and stays: no recording of blocks shall see that.
void makeStatics();

/// Runs `code` and expects it to leave heap blocks of these sizes behind, which are freed. `code` ends what
/// it begins: handles, rows of arguments; the recordings of the fake platform end with it.
template <typename Code>
void expectLeftBehind(std::vector<std::size_t> sizes, Code const &code);

using OperationAndForm = std::tuple<std::string, Form>;

class EveryOperation : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override { fake_platform::script(); }
    void TearDown() override { EXPECT_EQ(fake_platform::openMessagingHandles(), 0U); }
    std::string const &name() const { return GetParam(); }
    Expectation const &expected() const { return expectation(GetParam()); }
};

class EveryForm : public testing::TestWithParam<OperationAndForm> {
  protected:
    void SetUp() override { fake_platform::script(); }
    void TearDown() override { EXPECT_EQ(fake_platform::openMessagingHandles(), 0U); }
    std::string const &name() const { return std::get<0>(GetParam()); }
    Form form() const { return std::get<1>(GetParam()); }
    Expectation const &expected() const { return expectation(name()); }
};

std::vector<std::string> operationNames();
std::string nameOfOperation(testing::TestParamInfo<std::string> const &info);
std::string nameOfForm(testing::TestParamInfo<OperationAndForm> const &info);

#define FOR_EVERY_OPERATION(suite) \
    INSTANTIATE_TEST_SUITE_P(Client, suite, testing::ValuesIn(operationNames()), nameOfOperation)
#define FOR_EVERY_OPERATION_AND(suite, ...)                                                                 \
    INSTANTIATE_TEST_SUITE_P(                                                                               \
        Client, suite, testing::Combine(testing::ValuesIn(operationNames()), testing::Values(__VA_ARGS__)), \
        nameOfForm)

template <typename Code>
void expectLeftBehind(std::vector<std::size_t> sizes, Code const &code) {
    makeStatics();
    fake_platform::reset();
    live_blocks::Recording recording;
    code();
    fake_platform::reset();
    std::vector<live_blocks::Block> const blocks = recording.end();
    fake_platform::script();
    if (testing::Test::HasFailure()) {
        // The text of a failed expectation is among the blocks; it is no leak and must not be freed.
        return;
    }
    std::vector<std::size_t> left;
    for (live_blocks::Block const &block : blocks) {
        left.push_back(block.size);
        std::free(block.address);
    }
    std::sort(sizes.begin(), sizes.end());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, sizes) << "sizes of the blocks left behind";
}

#endif
