// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_DELIVER_H
#define KORVO_FRAME_DELIVER_H

// From results in a row to the parameters of a callback.

#include <cstddef>
#include <utility>

#include "frame/initiator.h"

namespace detail {

template <typename Parameter>
Parameter as(Result const &result);

template <>
inline unsigned int as<unsigned int>(Result const &result) {
    return result.number;
}

template <>
inline unsigned char as<unsigned char>(Result const &result) {
    return result.flag;
}

template <>
inline char *as<char *>(Result const &result) {
    return result.text;
}

template <>
inline char **as<char **>(Result const &result) {
    return result.texts.list;
}

template <>
inline unsigned int **as<unsigned int **>(Result const &result) {
    return result.numbers.list;
}

}  // namespace detail

/// The callbacks whose results are of these types.
template <typename... Parameters>
struct CallbackWith {
    using Type = void (*)(char *target, korvo_core_status status, Parameters... results, void *context);

    static void deliver(AnyCallback callback, char *target, korvo_core_status status, Result const *results,
                        void *context) {
        call(callback, target, status, results, context, std::index_sequence_for<Parameters...>());
    }

  private:
    template <std::size_t... Places>
    static void call(AnyCallback callback, char *target, korvo_core_status status,
                     [[maybe_unused]] Result const *results, void *context, std::index_sequence<Places...>) {
        reinterpret_cast<Type>(callback)(target, status, detail::as<Parameters>(results[Places])..., context);
    }
};

#endif
