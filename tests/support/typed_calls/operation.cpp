// SPDX-License-Identifier: Apache-2.0
#include "typed_calls/operation.h"

#include <map>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "korvo_api_action_engine.h"
#include "typed_calls/operation_names.h"

namespace typed_calls {

namespace {

/// Keeps a type from being deduced: an operation's inputs and out-pointers stand side by side only in two of
/// its forms, and are deduced from the others.
template <typename Type>
struct Given {
    using type = Type;
};

template <typename C>
struct KindOf;
template <>
struct KindOf<unsigned int> : std::integral_constant<Kind, Kind::number> {};
template <>
struct KindOf<unsigned char> : std::integral_constant<Kind, Kind::flag> {};
template <>
struct KindOf<char const *> : std::integral_constant<Kind, Kind::text> {};
template <>
struct KindOf<char *> : std::integral_constant<Kind, Kind::text> {};
template <>
struct KindOf<char **> : std::integral_constant<Kind, Kind::texts> {};
template <>
struct KindOf<unsigned int **> : std::integral_constant<Kind, Kind::numbers> {};

template <typename C>
constexpr Kind kind_of = KindOf<C>::value;

template <typename Out>
using Result = std::remove_pointer_t<Out>;

/// Callbacks of one type differ by `number` in address and in what they record.
template <int number, typename... Results>
void callback(char *target, korvo_core_status status, Results... results, void *context) {
    Receiver &receiver = *static_cast<Receiver *>(context);
    receiver.entered();
    receiver.called(target, status, {take(results)...}, number);
}

template <typename InList, typename OutList>
class Bound;

template <typename... In, typename... Out>
class Bound<std::tuple<In...>, std::tuple<Out...>> : public Operation {
  public:
    explicit Bound(char const *name) : Operation(name, {kind_of<In>...}, {kind_of<Result<Out>>...}) {}

    using Status = korvo_core_status;
    using CallbackType = void (*)(char *, Status, Result<Out>..., void *);

    Status (*send_form)(void *, char const *, In..., Out...);
    Status (*send_with_timeout_form)(void *, char const *, int, In..., Out...);
    Status (*non_blocking_send_form)(void *, char const *, char **, In...);
    Status (*receive_form)(void *, unsigned char, char const *, char *, Out...);
    Status (*receive_with_timeout_form)(void *, char const *, int, char *, Out...);
    Status (*send_async_form)(void *, char const *, In..., CallbackType, void *);
    Status (*cancel_async_form)(void *, CallbackType, void *);

    Status send(void *handle, char const *target, Inputs const &in, Outs &out) const override {
        return call([&](auto... arguments) { return send_form(handle, target, arguments...); }, in, out);
    }
    Status sendWithTimeout(void *handle, char const *target, int timeout, Inputs const &in,
                           Outs &out) const override {
        return call(
            [&](auto... arguments) { return send_with_timeout_form(handle, target, timeout, arguments...); },
            in, out);
    }
    Status nonBlockingSend(void *handle, char const *target, char **request_id,
                           Inputs const &in) const override {
        return withInputs(
            [&](auto... arguments) {
                return non_blocking_send_form(handle, target, request_id, arguments...);
            },
            in, std::index_sequence_for<In...>());
    }
    Status receive(void *handle, unsigned char block, char const *target, char *request_id,
                   Outs &out) const override {
        return withOuts(
            [&](auto... arguments) { return receive_form(handle, block, target, request_id, arguments...); },
            out, std::index_sequence_for<Out...>());
    }
    Status receiveWithTimeout(void *handle, char const *target, int timeout, char *request_id,
                              Outs &out) const override {
        return withOuts(
            [&](auto... arguments) {
                return receive_with_timeout_form(handle, target, timeout, request_id, arguments...);
            },
            out, std::index_sequence_for<Out...>());
    }
    Status sendAsync(void *handle, char const *target, Inputs const &in, Callback which,
                     Receiver *context) const override {
        return withInputs(
            [&](auto... arguments) {
                return send_async_form(handle, target, arguments..., chosen(which), context);
            },
            in, std::index_sequence_for<In...>());
    }
    Status cancelAsync(void *handle, Callback which, Receiver *context) const override {
        return cancel_async_form(handle, chosen(which), context);
    }

  private:
    static CallbackType chosen(Callback which) {
        switch (which) {
            case Callback::first:
                return &callback<1, Result<Out>...>;
            case Callback::second:
                return &callback<2, Result<Out>...>;
            case Callback::none:
                break;
        }
        return nullptr;
    }

    template <typename Function, std::size_t... Places>
    static Status withInputs(Function const &function, [[maybe_unused]] Inputs const &in,
                             std::index_sequence<Places...>) {
        return function(std::get<In>(in[Places])...);
    }

    template <typename Function, std::size_t... Places>
    static Status withOuts(Function const &function, [[maybe_unused]] Outs &out,
                           std::index_sequence<Places...>) {
        return function(&std::get<Result<Out>>(out[Places])...);
    }

    template <typename Function>
    static Status call(Function const &function, Inputs const &in, Outs &out) {
        return withInputs(
            [&](auto... inputs) {
                return withOuts([&](auto... outs) { return function(inputs..., outs...); }, out,
                                std::index_sequence_for<Out...>());
            },
            in, std::index_sequence_for<In...>());
    }
};

template <typename... In, typename... Out>
std::unique_ptr<Operation> bind(
    char const *name, typename Given<korvo_core_status (*)(void *, char const *, In..., Out...)>::type send,
    typename Given<korvo_core_status (*)(void *, char const *, int, In..., Out...)>::type send_with_timeout,
    korvo_core_status (*non_blocking_send)(void *, char const *, char **, In...),
    korvo_core_status (*receive)(void *, unsigned char, char const *, char *, Out...),
    typename Given<korvo_core_status (*)(void *, char const *, int, char *, Out...)>::type
        receive_with_timeout,
    typename Given<korvo_core_status (*)(void *, char const *, In...,
                                         void (*)(char *, korvo_core_status, Result<Out>..., void *),
                                         void *)>::type send_async,
    typename Given<korvo_core_status (*)(void *, void (*)(char *, korvo_core_status, Result<Out>..., void *),
                                         void *)>::type cancel_async) {
    auto bound = std::make_unique<Bound<std::tuple<In...>, std::tuple<Out...>>>(name);
    bound->send_form = send;
    bound->send_with_timeout_form = send_with_timeout;
    bound->non_blocking_send_form = non_blocking_send;
    bound->receive_form = receive;
    bound->receive_with_timeout_form = receive_with_timeout;
    bound->send_async_form = send_async;
    bound->cancel_async_form = cancel_async;
    return bound;
}

}  // namespace

char const *nameOf(Form form) {
    switch (form) {
        case Form::send:
            return "send";
        case Form::send_with_timeout:
            return "send_with_timeout";
        case Form::non_blocking_send:
            return "non_blocking_send";
        case Form::receive:
            return "receive";
        case Form::receive_with_timeout:
            return "receive_with_timeout";
        case Form::send_async:
            return "send_async";
        case Form::cancel_async:
            break;
    }
    return "cancel_async";
}

template <typename Form>
Answer Operation::answer(Form const &form) const {
    Outs outs(results_);
    Answer answer;
    answer.status = form(outs);
    if (answer.status == KORVO_CORE_STATUS_NO_ERROR) {
        answer.results = outs.values();
    }
    return answer;
}

Answer Operation::send(void *handle, char const *target, Values const &inputs) const {
    return answer([&](Outs &outs) { return send(handle, target, Inputs(inputs), outs); });
}

Answer Operation::sendWithTimeout(void *handle, char const *target, int timeout, Values const &inputs) const {
    return answer([&](Outs &outs) { return sendWithTimeout(handle, target, timeout, Inputs(inputs), outs); });
}

korvo_core_status Operation::nonBlockingSend(void *handle, char const *target, char **request_id,
                                             Values const &inputs) const {
    return nonBlockingSend(handle, target, request_id, Inputs(inputs));
}

Answer Operation::receive(void *handle, unsigned char block, char const *target, char *request_id) const {
    return answer([&](Outs &outs) { return receive(handle, block, target, request_id, outs); });
}

Answer Operation::receiveWithTimeout(void *handle, char const *target, int timeout, char *request_id) const {
    return answer([&](Outs &outs) { return receiveWithTimeout(handle, target, timeout, request_id, outs); });
}

korvo_core_status Operation::sendAsync(void *handle, char const *target, Values const &inputs,
                                       Receiver &context) const {
    return sendAsync(handle, target, Inputs(inputs), Callback::first, &context);
}

korvo_core_status Operation::cancelAsync(void *handle, Receiver &context) const {
    return cancelAsync(handle, Callback::first, &context);
}

std::map<std::string, std::unique_ptr<Operation>> const &operations() {
    static auto const all = [] {
        std::map<std::string, std::unique_ptr<Operation>> made;
#define BIND(name)                                                                                          \
    made[#name] = bind(                                                                                     \
        #name, korvo_api_action_engine_##name##_send, korvo_api_action_engine_##name##_send_with_timeout,   \
        korvo_api_action_engine_##name##_non_blocking_send, korvo_api_action_engine_##name##_receive,       \
        korvo_api_action_engine_##name##_receive_with_timeout, korvo_api_action_engine_##name##_send_async, \
        korvo_api_action_engine_##name##_cancel_async);
        OPERATION_NAMES(BIND)
#undef BIND
        return made;
    }();
    return all;
}

Operation const &operation(std::string const &name) {
    return *operations().at(name);
}

Operation const &versionQuery() {
    static auto const query =
        bind("__get_target_version__", korvo_api_action_engine___get_target_version___send, nullptr,
             korvo_api_action_engine___get_target_version___non_blocking_send,
             korvo_api_action_engine___get_target_version___receive, nullptr,
             korvo_api_action_engine___get_target_version___send_async,
             korvo_api_action_engine___get_target_version___cancel_async);
    return *query;
}

}  // namespace typed_calls
