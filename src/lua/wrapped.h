// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_WRAPPED_H
#define KORVO_LUA_WRAPPED_H

// From a signature to the code that calls functions of that signature.

#include <array>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "lua/functions.h"

namespace korvo::lua {

/// The functions with this result and these parameters; there is one `call` for all of them.
template <typename Result, typename... Parameters>
class Wrapped {
  public:
    using Type = typename Result::C (*)(typename Parameters::C...);

  private:
    static_assert(sizeof...(Parameters) < most_values);

    template <std::size_t... Places>
    static void callAt(AnyFunction function, Value *values, std::index_sequence<Places...>) {
        auto const typed = reinterpret_cast<Type>(function);
        if constexpr (std::is_void_v<typename Result::C>) {
            typed(Parameters::pass(values[1 + Places])...);
        } else {
            Result::store(values[0], typed(Parameters::pass(values[1 + Places])...));
        }
    }

    static void call(AnyFunction function, Value *values) {
        callAt(function, values, std::index_sequence_for<Parameters...>());
    }

    static constexpr Convention conventions[] = {Result::value, Parameters::value...};

    static constexpr unsigned char count(bool (*has)(Convention)) {
        unsigned char total = 0;
        for (Convention const convention : conventions) {
            total = static_cast<unsigned char>(total + (has(convention) ? 1 : 0));
        }
        return total;
    }

    static constexpr auto makeSlots() {
        std::array<Slot, std::size_t{count(isInput)} + count(isResult) + count(mustBeReleased)> made = {};
        std::size_t next = 0;
        for (auto const has : {isInput, isResult, mustBeReleased}) {
            for (unsigned char place = 0; place < std::size(conventions); ++place) {
                if (has(conventions[place])) {
                    made[next++] = {conventions[place], place};
                }
            }
        }
        return made;
    }

    static constexpr auto slots = makeSlots();

  public:
    static constexpr Shape shape = {call,
                                    slots.data(),
                                    count(isInput),
                                    count(isResult),
                                    count(mustBeReleased),
                                    static_cast<unsigned char>(std::size(conventions)),
                                    Result::value == Convention::returned_status,
                                    count(becomesPointer) != 0,
                                    count(isList) != 0};

  private:
    // Results are either pointers, which are prepared before the call, or may be pushed in a call of their own.
    static_assert(count(becomesPointer) == 0 || count(isText) == 0);
};

template <Convention result, Convention... parameters>
using WrappedAs = Wrapped<Parameter<result>, Parameter<parameters>...>;

}  // namespace korvo::lua

/// A record of a function of this signature. The compiler refuses a function that has another one.
#define KORVO_LUA_FUNCTION(function, ...) \
    { reinterpret_cast<AnyFunction>(static_cast<typename __VA_ARGS__::Type>(function)), &__VA_ARGS__::shape }

#endif
