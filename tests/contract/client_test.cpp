// SPDX-License-Identifier: Apache-2.0
#include "client_test.h"

#include <cmath>

using fake_platform::Function;

std::vector<korvo_core_status> const &failures() {
    static std::vector<korvo_core_status> const all = {KORVO_CORE_STATUS_INVALID_PARAMS,
                                                       KORVO_CORE_STATUS_ALLOC_FAILED,
                                                       KORVO_CORE_STATUS_MULTI_THREAD_ACCESS,
                                                       KORVO_CORE_STATUS_IPC_FAILED,
                                                       KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE,
                                                       KORVO_CORE_STATUS_SETTING_NOT_PRESENT,
                                                       KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT,
                                                       KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION,
                                                       KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE,
                                                       KORVO_CORE_STATUS_DISABLED_TARGET,
                                                       static_cast<korvo_core_status>(77)};
    return all;
}

std::vector<fake_platform::Throw> const &exceptions() {
    static std::vector<fake_platform::Throw> const all = {fake_platform::Throw::standard_exception,
                                                          fake_platform::Throw::json_exception,
                                                          fake_platform::Throw::number};
    return all;
}

bool isUuid(std::string const &text) {
    if (text.size() != 36) {
        return false;
    }
    for (std::size_t place = 0; place < text.size(); ++place) {
        bool const hyphen = place == 8 || place == 13 || place == 18 || place == 23;
        char const *const allowed = hyphen        ? "-"
                                    : place == 14 ? "4"
                                    : place == 19 ? "89ab"
                                                  : "0123456789abcdef";
        if (std::strchr(allowed, text[place]) == nullptr) {
            return false;
        }
    }
    return true;
}

std::vector<json::UnknownElement> mistyped(Kind kind) {
    json::Object object;
    object["value"] = json::Number(1);
    json::Array array;
    array.Insert(json::Number(1));
    std::vector<json::UnknownElement> elements = {json::Null(), object};
    if (!isList(kind)) {
        elements.emplace_back(array);
    }
    if (kind != Kind::text) {
        elements.emplace_back(json::String("12"));
    }
    if (kind != Kind::number) {
        elements.emplace_back(json::Number(12));
    }
    if (kind != Kind::flag) {
        elements.emplace_back(json::Boolean(true));
    }
    return elements;
}

std::vector<json::UnknownElement> mistypedElements(Kind kind) {
    return mistyped(kind == Kind::texts ? Kind::text : Kind::number);
}

std::vector<Conversion> const &conversions() {
    static double const infinity = std::numeric_limits<double>::infinity();
    static std::vector<Conversion> const all = {{0.0, 0},
                                                {-0.0, 0},
                                                {0.999, 0},
                                                {1.0, 1},
                                                {2.9, 2},
                                                {-1.0, 0},
                                                {-0.5, 0},
                                                {-1e300, 0},
                                                {2147483648.0, 2147483648U},
                                                {4294967294.9, 4294967294U},
                                                {4294967295.0, 4294967295U},
                                                {4294967295.5, 4294967295U},
                                                {4294967296.0, 4294967295U},
                                                {1e300, 4294967295U},
                                                {infinity, 4294967295U},
                                                {-infinity, 0},
                                                {std::nan(""), 0}};
    return all;
}

json::Object without(json::Object const &response, std::string const &name) {
    json::Object changed;
    for (json::Object::Member const &member : response) {
        if (member.name != name) {
            changed.Insert(member);
        }
    }
    return changed;
}

json::Object with(json::Object const &response, std::string const &name,
                  json::UnknownElement const &element) {
    json::Object changed(response);
    changed[name] = element;
    return changed;
}

/// The fake platform takes part from the first handle on.
static char const *scripted() {
    fake_platform::script();
    return "contract tests";
}

Client::Client(unsigned char subscribe_events) : client_(scripted(), subscribe_events != 0) {}

Client::~Client() {
    EXPECT_EQ(client_.close(), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(client_.closeLogging(), KORVO_CORE_STATUS_NO_ERROR);
}

void Context::entered() {
    if (during) {
        during();
    }
}

void Context::called(char const *target, korvo_core_status status, Values results, int callback) {
    calls.push_back({target != nullptr ? std::optional<std::string>(target) : std::nullopt, status,
                     std::move(results), callback});
    if (throws) {
        throw 1;
    }
}

korvo_core_status callForm(Client const &client, std::string const &name, Form form, FormCall &call,
                           Inputs const &inputs, Outs &outs) {
    Operation const &under_test = operation(name);
    switch (form) {
        case Form::send:
            return under_test.send(client.handle(), call.target, inputs, outs);
        case Form::send_with_timeout:
            return under_test.sendWithTimeout(client.handle(), call.target, call.timeout, inputs, outs);
        case Form::non_blocking_send:
            return under_test.nonBlockingSend(client.handle(), call.target, &call.request_id, inputs);
        case Form::receive:
            return under_test.receive(client.handle(), call.block, call.target, call.request_id, outs);
        case Form::receive_with_timeout:
            return under_test.receiveWithTimeout(client.handle(), call.target, call.timeout, call.request_id,
                                                 outs);
        case Form::send_async:
            return under_test.sendAsync(client.handle(), call.target, inputs, call.callback, call.context);
        case Form::cancel_async:
            break;
    }
    return under_test.cancelAsync(client.handle(), call.callback, call.context);
}

std::string sendAsync(Client const &client, std::string const &name, Callback callback, Context &context,
                      korvo_core_status expected) {
    std::size_t const before = fake_platform::calls(Function::send_command).size();
    EXPECT_EQ(operation(name).sendAsync(client.handle(), sample_target,
                                        Inputs(samples(expectation(name).inputs)), callback, &context),
              expected);
    auto const sent = fake_platform::calls(Function::send_command);
    EXPECT_EQ(sent.size(), before + 1);
    return sent.empty() ? "" : sent.back().request_id.value_or("");
}

bool sends(Form form) {
    return form == Form::send || form == Form::send_with_timeout || form == Form::non_blocking_send ||
           form == Form::send_async;
}

bool receives(Form form) {
    return form == Form::send || form == Form::send_with_timeout || form == Form::receive ||
           form == Form::receive_with_timeout;
}

void makeStatics() {
    (void)operations();
    (void)expectations();
    (void)failures();
    (void)exceptions();
    (void)conversions();
}

bool holdsIdentifier(std::vector<live_blocks::Block> const &left, void const *address) {
    constexpr std::size_t size = 37;
    return std::any_of(left.begin(), left.end(), [=](live_blocks::Block const &block) {
        return block.address == address && block.size == size;
    });
}

std::vector<std::string> operationNames() {
    std::vector<std::string> names;
    for (Expectation const &expected : expectations()) {
        names.emplace_back(expected.operation);
    }
    return names;
}

std::string nameOfOperation(testing::TestParamInfo<std::string> const &info) {
    return info.param;
}

std::string nameOfForm(testing::TestParamInfo<OperationAndForm> const &info) {
    return std::get<0>(info.param) + "_" + nameOf(std::get<1>(info.param));
}
