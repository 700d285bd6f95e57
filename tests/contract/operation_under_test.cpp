// SPDX-License-Identifier: Apache-2.0
#include "operation_under_test.h"

#include <map>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

#include "korvo_api_action_engine.h"

namespace {

/// Keeps a type from being deduced: an operation's inputs and out-pointers stand side by side only in two of
/// its forms, and are deduced from the others.
template <typename Type>
struct Given {
    using type = Type;
};

template <typename Out>
using Result = std::remove_pointer_t<Out>;

/// Callbacks differ by `number` in address and in what they record.
template <int number, typename... Results>
void callback(char *target, korvo_core_status status, Results... results, void *context) {
    Context &record = *static_cast<Context *>(context);
    if (record.during) {
        record.during();
    }
    recordCallback(record, target, status, {take(results)...}, number);
}

template <typename InList, typename OutList>
class Bound;

template <typename... In, typename... Out>
class Bound<std::tuple<In...>, std::tuple<Out...>> : public OperationUnderTest {
  public:
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
                     void *context) const override {
        return withInputs(
            [&](auto... arguments) {
                return send_async_form(handle, target, arguments..., chosen(which), context);
            },
            in, std::index_sequence_for<In...>());
    }
    Status cancelAsync(void *handle, Callback which, void *context) const override {
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
std::unique_ptr<OperationUnderTest> bind(
    typename Given<korvo_core_status (*)(void *, char const *, In..., Out...)>::type send,
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
    auto bound = std::make_unique<Bound<std::tuple<In...>, std::tuple<Out...>>>();
    bound->send_form = send;
    bound->send_with_timeout_form = send_with_timeout;
    bound->non_blocking_send_form = non_blocking_send;
    bound->receive_form = receive;
    bound->receive_with_timeout_form = receive_with_timeout;
    bound->send_async_form = send_async;
    bound->cancel_async_form = cancel_async;
    return bound;
}

std::map<std::string, std::unique_ptr<OperationUnderTest>> const &all() {
    static auto const operations = [] {
        std::map<std::string, std::unique_ptr<OperationUnderTest>> made;
#define FORMS(op)                                                                                            \
    made[#op] =                                                                                              \
        bind(korvo_api_action_engine_##op##_send, korvo_api_action_engine_##op##_send_with_timeout,          \
             korvo_api_action_engine_##op##_non_blocking_send, korvo_api_action_engine_##op##_receive,       \
             korvo_api_action_engine_##op##_receive_with_timeout, korvo_api_action_engine_##op##_send_async, \
             korvo_api_action_engine_##op##_cancel_async)
        FORMS(get_actions);
        FORMS(get_action_counts);
        FORMS(get_action_type);
        FORMS(delete_action);
        FORMS(get_action_filters);
        FORMS(set_action_filters);
        FORMS(get_email_action);
        FORMS(create_email_action);
        FORMS(modify_email_action);
        FORMS(get_ftp_action);
        FORMS(create_ftp_action);
        FORMS(modify_ftp_action);
        FORMS(get_snapshot_action);
        FORMS(create_snapshot_action);
        FORMS(modify_snapshot_action);
        FORMS(get_ptz_pattern_action);
        FORMS(create_ptz_pattern_action);
        FORMS(modify_ptz_pattern_action);
        FORMS(get_ptz_preset_action);
        FORMS(create_ptz_preset_action);
        FORMS(modify_ptz_preset_action);
        FORMS(get_ptz_scan_action);
        FORMS(create_ptz_scan_action);
        FORMS(modify_ptz_scan_action);
        FORMS(get_ptz_tour_action);
        FORMS(create_ptz_tour_action);
        FORMS(modify_ptz_tour_action);
        FORMS(get_wiper_action);
        FORMS(create_wiper_action);
        FORMS(modify_wiper_action);
        FORMS(get_washer_action);
        FORMS(create_washer_action);
        FORMS(modify_washer_action);
        FORMS(get_relay_action);
        FORMS(create_relay_action);
        FORMS(modify_relay_action);
        FORMS(get_triggers);
        FORMS(get_trigger_counts);
        FORMS(get_trigger_type);
        FORMS(delete_trigger);
        FORMS(create_timer_trigger);
        FORMS(get_timer_trigger);
        FORMS(modify_timer_trigger);
        FORMS(create_onvif_trigger);
        FORMS(get_onvif_trigger);
        FORMS(modify_onvif_trigger);
        FORMS(create_stable_onvif_trigger);
        FORMS(get_stable_onvif_trigger);
        FORMS(modify_stable_onvif_trigger);
        FORMS(get_trigger_associations);
        FORMS(get_action_associations);
        FORMS(create_association);
        FORMS(delete_association);
        FORMS(onvif_event);
#undef FORMS
        return made;
    }();
    return operations;
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

OperationUnderTest const &operation(std::string const &name) {
    return *all().at(name);
}

std::vector<std::string> boundOperations() {
    std::vector<std::string> names;
    for (auto const &bound : all()) {
        names.push_back(bound.first);
    }
    return names;
}
