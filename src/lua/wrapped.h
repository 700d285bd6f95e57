// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_WRAPPED_H
#define KORVO_LUA_WRAPPED_H

// From a signature to the code that calls functions of that signature and pushes what they give.

#include <array>
#include <utility>

#include "lua/functions.h"
#include "lua/parameter.h"

namespace korvo::lua {

/// Pushes results in their order; signatures with the same results share it.
template <Passing... results>
void pushResults([[maybe_unused]] lua_State *L, [[maybe_unused]] Value const *values,
                 [[maybe_unused]] Prepared prepared) {
    (Parameter<results>::push(L, *values++, prepared), ...);
}

/// The functions with this result and these parameters; there is one `call` for all of them.
template <typename Result, typename... Parameters>
class Wrapped {
  public:
    using Type = typename Result::C (*)(typename Parameters::C...);

  private:
    // In C order, what is returned first.
    static constexpr std::size_t c_count = 1 + sizeof...(Parameters);
    static constexpr Passing in_c[c_count] = {Result::value, Parameters::value...};
    static_assert(c_count <= most_values);

    static constexpr std::size_t count(bool (*has)(Passing)) {
        std::size_t total = 0;
        for (Passing const passing : in_c) {
            total += has(passing) ? 1U : 0U;
        }
        return total;
    }

    static constexpr std::size_t arguments = count(isInput);
    static constexpr std::size_t results = count(isResult);

    /// How each value passes: the arguments, and then the results.
    static constexpr auto makePassings() {
        std::array<Passing, arguments + results> made = {};
        for (std::size_t place = 0; place < c_count; ++place) {
            if (in_c[place] != Passing::returned_nothing) {
                made[placeOfValue(place)] = in_c[place];
            }
        }
        return made;
    }

    /// From a place in C order to one among the values.
    static constexpr std::size_t placeOfValue(std::size_t place) {
        bool const is_input = isInput(in_c[place]);
        std::size_t before = is_input ? 0 : arguments;
        for (std::size_t other = 0; other < place; ++other) {
            before += (is_input ? isInput(in_c[other]) : isResult(in_c[other])) ? 1U : 0U;
        }
        return before;
    }

    static constexpr unsigned short makeTexts() {
        unsigned texts = 0;
        for (std::size_t place = 0; place < c_count; ++place) {
            texts |= isText(in_c[place]) ? 1U << placeOfValue(place) : 0U;
        }
        return static_cast<unsigned short>(texts);
    }

    static constexpr auto passings = makePassings();

    template <std::size_t place>
    static constexpr std::size_t value_place = placeOfValue(place);

    template <std::size_t... places>
    static void callAt(AnyFunction function, Value *values, std::index_sequence<places...>) {
        auto const typed = reinterpret_cast<Type>(function);
        if constexpr (std::is_void_v<typename Result::C>) {
            typed(Parameters::pass(values[value_place<1 + places>])...);
        } else {
            Value &returned = values[arguments];
            returned = {};
            Result::store(returned, typed(Parameters::pass(values[value_place<1 + places>])...));
        }
    }

    static void call(AnyFunction function, Value *values) {
        callAt(function, values, std::index_sequence_for<Parameters...>());
    }

    template <std::size_t... places>
    static constexpr auto pusher(std::index_sequence<places...>) {
        return &pushResults<passings[arguments + places]...>;
    }

  public:
    static constexpr Shape shape = {call,
                                    pusher(std::make_index_sequence<results>()),
                                    passings.data(),
                                    static_cast<unsigned char>(arguments),
                                    static_cast<unsigned char>(results),
                                    Result::value == Passing::returned_status,
                                    count(becomesPointer) != 0,
                                    count(isList) != 0,
                                    makeTexts()};

  private:
    // Results are either pointers, which are prepared before the call, or may be pushed in a call of their own.
    static_assert(count(becomesPointer) == 0 || count(isText) == 0);
    static_assert(count(isText) <= most_texts);
};

template <Passing result, Passing... parameters>
using WrappedAs = Wrapped<Parameter<result>, Parameter<parameters>...>;

}  // namespace korvo::lua

/// A record of a function of this signature. The compiler refuses a function that has another one.
#define KORVO_LUA_FUNCTION(function, ...) \
    { reinterpret_cast<AnyFunction>(static_cast<typename __VA_ARGS__::Type>(function)), &__VA_ARGS__::shape }

#endif
