// SPDX-License-Identifier: Apache-2.0
#include "lua_layer/senders.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "korvo/detail/core.hpp"
#include "korvo_api_action_engine.h"
#include "operations/operations.h"

namespace korvo::lua_layer {
namespace {

using operations::InputOf;
using operations::ResultOf;

template <Kind kind>
InputOf<kind> inputOf(Value &value) {
    if constexpr (kind == Kind::number) {
        return value.number;
    } else if constexpr (kind == Kind::flag) {
        return static_cast<unsigned char>(value.number);
    } else if constexpr (kind == Kind::text) {
        return value.text.c_str();
    } else if constexpr (kind == Kind::texts) {
        for (std::string &one : value.texts) {
            value.text_pointers.push_back(one.data());
        }
        value.text_pointers.push_back(nullptr);
        return value.text_pointers.data();
    } else {
        for (unsigned int &one : value.numbers) {
            value.number_pointers.push_back(&one);
        }
        value.number_pointers.push_back(nullptr);
        return value.number_pointers.data();
    }
}

template <Kind kind>
Value valueOf(ResultOf<kind> result) {
    Value value;
    if constexpr (kind == Kind::number || kind == Kind::flag) {
        value.number = result;
    } else if constexpr (kind == Kind::text) {
        value.text = detail::text(result);
    } else if constexpr (kind == Kind::texts) {
        value.texts = detail::texts(result);
    } else {
        for (std::size_t place = 0; place < detail::length(result); ++place) {
            value.numbers.push_back(*result[place]);
        }
    }
    return value;
}

/// A list of kinds behind one that is none, so that rows may put a comma before each.
template <Kind...>
struct Kinds;

template <typename Results>
struct Answer;

template <Kind... results>
struct Answer<Kinds<Kind::none, results...>> {
    static Result<Values> read(korvo_core_status status, char const *name,
                               ResultOf<results>... given) noexcept {
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            return Failure{status, name, nullptr};
        }
        try {
            Values values;
            values.reserve(sizeof...(results));
            (values.push_back(valueOf<results>(given)), ...);
            return values;
        } catch (std::bad_alloc const &) {
            return Failure{KORVO_CORE_STATUS_ALLOC_FAILED, name, nullptr};
        }
    }

    template <Kind kind>
    static void release(ResultOf<kind> result) noexcept {
        // Texts are the callback's; lists stay the library's.
        if constexpr (kind == Kind::text) {
            std::free(result);
        }
    }

    /// On a messaging thread, under a lock of the plain library.
    static void came(char *, korvo_core_status status, ResultOf<results>... given, void *context) noexcept {
        detail::Slot &slot = *static_cast<detail::Slot *>(context);
        detail::Core &core = *slot.session->core;
        if (std::shared_ptr<detail::Call> const call = core.claim(slot)) {
            static_cast<QueuedCall &>(*call).settle(read(status, call->name(), given...));
            core.deliver(call);
        }
        (release<results>(given), ...);
    }
};

template <auto send_async, typename Inputs, typename Results>
struct Send;

template <auto send_async, Kind... inputs, typename Results>
struct Send<send_async, Kinds<Kind::none, inputs...>, Results> {
    template <std::size_t... places>
    static korvo_core_status sendEach(void *handle, char const *target, [[maybe_unused]] Value *values,
                                      void *slot, std::index_sequence<places...>) {
        return send_async(handle, target, inputOf<inputs>(values[places])..., Answer<Results>::came, slot);
    }
    static korvo_core_status send(void *handle, char const *target, Value *values, void *slot) {
        return sendEach(handle, target, values, slot, std::make_index_sequence<sizeof...(inputs)>());
    }
};

constexpr operations::Member no_inputs[] = {{Kind::none, nullptr}};

#define KIND(kind, member) , Kind::kind
constexpr Sender senders[] = {
#define OPERATION(name, Method, INPUTS, RESULTS)                                       \
    {#name, operations::members::name##_inputs, operations::members::name##_results,   \
     Send<korvo_api_action_engine_##name##_send_async, Kinds<Kind::none INPUTS(KIND)>, \
          Kinds<Kind::none RESULTS(KIND)>>::send},
// The library fills its inputs in.
#define VERSION_QUERY(name, Method, INPUTS, RESULTS)                      \
    {#name, no_inputs, operations::members::name##_results,               \
     Send<korvo_api_action_engine_##name##_send_async, Kinds<Kind::none>, \
          Kinds<Kind::none RESULTS(KIND)>>::send},
#include "operations/operations.def"
};
#undef KIND

}  // namespace

Sender const *senderOf(char const *name) {
    for (Sender const &sender : senders) {
        if (std::strcmp(sender.name, name) == 0) {
            return &sender;
        }
    }
    return nullptr;
}

}  // namespace korvo::lua_layer
