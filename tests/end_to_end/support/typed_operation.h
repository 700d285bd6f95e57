// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_TYPED_OPERATION_H
#define KORVO_TESTS_END_TO_END_TYPED_OPERATION_H

// From the types of an operation's functions to Operation. The inputs' types are read off the _non_blocking_send
// form and the results' off the _receive form; the other forms then have to agree.

#include <cstdlib>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "operation.h"

namespace end_to_end {

/// An input as C takes it. Borrows from the value.
template <typename C>
class Input;

template <>
class Input<unsigned int> {
  public:
    static constexpr Kind kind = Kind::number;
    explicit Input(Value const &value) : value_(std::get<Number>(value)) {}
    unsigned int get() { return value_; }

  private:
    unsigned int value_;
};

template <>
class Input<unsigned char> {
  public:
    static constexpr Kind kind = Kind::flag;
    explicit Input(Value const &value) : value_(std::get<Flag>(value)) {}
    unsigned char get() { return value_; }

  private:
    unsigned char value_;
};

template <>
class Input<char const *> {
  public:
    static constexpr Kind kind = Kind::text;
    explicit Input(Value const &value) : value_(std::get<Text>(value).c_str()) {}
    char const *get() { return value_; }

  private:
    char const *value_;
};

/// A list input: the library only reads it, although its type says nothing of that.
template <typename Element, typename List, Kind list_kind>
class ListInput {
  public:
    static constexpr Kind kind = list_kind;
    explicit ListInput(Value const &value) : elements_(std::get<List>(value)) {
        for (auto &element : elements_) {
            if constexpr (list_kind == Kind::texts) {
                pointers_.push_back(element.data());
            } else {
                pointers_.push_back(&element);
            }
        }
        pointers_.push_back(nullptr);
    }
    ListInput(ListInput const &) = delete;
    ListInput &operator=(ListInput const &) = delete;
    Element **get() { return pointers_.data(); }

  private:
    List elements_;
    std::vector<Element *> pointers_;
};

template <>
class Input<char **> : public ListInput<char, Texts, Kind::texts> {
    using ListInput::ListInput;
};

template <>
class Input<unsigned int **> : public ListInput<unsigned int, Numbers, Kind::numbers> {
    using ListInput::ListInput;
};

inline Value copyOf(unsigned int result) {
    return result;
}
inline Value copyOf(unsigned char result) {
    return result;
}
inline Value copyOf(char *result) {
    return result != nullptr ? Text(result) : Text();
}
inline Value copyOf(char **result) {
    Texts texts;
    for (char **element = result; element != nullptr && *element != nullptr; ++element) {
        texts.emplace_back(*element);
    }
    return texts;
}
inline Value copyOf(unsigned int **result) {
    Numbers numbers;
    for (unsigned int **element = result; element != nullptr && *element != nullptr; ++element) {
        numbers.push_back(**element);
    }
    return numbers;
}

inline void freeText(char *text) {
    std::free(text);
}
template <typename Other>
void freeText(Other) {}

/// Frees what a synchronous form returned.
inline void freeResult(char **list) {
    korvo_core_free_string_array(list);
}
inline void freeResult(unsigned int **list) {
    korvo_core_free_uint_array(list);
}
template <typename Other>
void freeResult(Other result) {
    freeText(result);
}

template <typename... Type>
struct Types {};

template <typename In, typename Out>
class TypedOperation;

template <typename... In, typename... Out>
class TypedOperation<Types<In...>, Types<Out...>> final : public Operation {
  public:
    using Callback = void (*)(char *, korvo_core_status, Out..., void *);

    struct Functions {
        korvo_core_status (*send)(void *, char const *, In..., Out *...);
        korvo_core_status (*send_with_timeout)(void *, char const *, int, In..., Out *...);
        korvo_core_status (*non_blocking_send)(void *, char const *, char **, In...);
        korvo_core_status (*receive)(void *, unsigned char, char const *, char *, Out *...);
        korvo_core_status (*receive_with_timeout)(void *, char const *, int, char *, Out *...);
        korvo_core_status (*send_async)(void *, char const *, In..., Callback, void *);
        korvo_core_status (*cancel_async)(void *, Callback, void *);
    };

    TypedOperation(char const *name, Functions const &functions)
        : Operation(name, {Input<In>::kind...}, sizeof...(Out)), functions_(functions) {}

    Answer send(void *handle, char const *target, Values const &inputs) const override {
        return withInputs(inputs, [&](auto... input) {
            return withResults(
                [&](auto *...result) { return functions_.send(handle, target, input..., result...); });
        });
    }

    Answer sendWithTimeout(void *handle, char const *target, int timeout,
                           Values const &inputs) const override {
        return withInputs(inputs, [&](auto... input) {
            return withResults([&](auto *...result) {
                return functions_.send_with_timeout(handle, target, timeout, input..., result...);
            });
        });
    }

    korvo_core_status nonBlockingSend(void *handle, char const *target, char **request_id,
                                      Values const &inputs) const override {
        return withInputs(inputs, [&](auto... input) {
            return functions_.non_blocking_send(handle, target, request_id, input...);
        });
    }

    Answer receive(void *handle, unsigned char block, char const *target, char *request_id) const override {
        return withResults([&](auto *...result) {
            return functions_.receive(handle, block, target, request_id, result...);
        });
    }

    Answer receiveWithTimeout(void *handle, char const *target, int timeout,
                              char *request_id) const override {
        return withResults([&](auto *...result) {
            return functions_.receive_with_timeout(handle, target, timeout, request_id, result...);
        });
    }

    korvo_core_status sendAsync(void *handle, char const *target, Values const &inputs,
                                PendingAnswer &context) const override {
        return withInputs(inputs, [&](auto... input) {
            return functions_.send_async(handle, target, input..., &onResponse, &context);
        });
    }

    korvo_core_status cancelAsync(void *handle, PendingAnswer &context) const override {
        return functions_.cancel_async(handle, &onResponse, &context);
    }

  private:
    static void onResponse(char *, korvo_core_status status, Out... result, void *context) {
        Answer answer;
        answer.status = status;
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            answer.results = {copyOf(result)...};
        }
        // The texts are the callback's own, the lists are not.
        (freeText(result), ...);
        static_cast<PendingAnswer *>(context)->deliver(std::move(answer));
    }

    template <typename Call>
    static auto withInputs(Values const &inputs, Call const &call) {
        return withInputs(inputs, call, std::index_sequence_for<In...>());
    }

    template <typename Call, std::size_t... place>
    static auto withInputs([[maybe_unused]] Values const &inputs, Call const &call,
                           std::index_sequence<place...>) {
        std::tuple<Input<In>...> lowered(inputs.at(place)...);
        return std::apply([&](auto &...input) { return call(input.get()...); }, lowered);
    }

    template <typename Call>
    static Answer withResults(Call const &call) {
        std::tuple<Out...> results{};
        return std::apply(
            [&](auto &...result) {
                Answer answer;
                answer.status = call(&result...);
                if (answer.status == KORVO_CORE_STATUS_NO_ERROR) {
                    answer.results = {copyOf(result)...};
                }
                (freeResult(result), ...);
                return answer;
            },
            results);
    }

    Functions functions_;
};

template <typename... In, typename... Out>
std::unique_ptr<Operation> makeOperation(
    char const *name, korvo_core_status (*)(void *, char const *, char **, In...),
    korvo_core_status (*)(void *, unsigned char, char const *, char *, Out *...),
    typename TypedOperation<Types<In...>, Types<Out...>>::Functions const &functions) {
    return std::make_unique<TypedOperation<Types<In...>, Types<Out...>>>(name, functions);
}

}  // namespace end_to_end

#endif
