// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TYPED_CALLS_VALUES_H
#define KORVO_TESTS_TYPED_CALLS_VALUES_H

#include <string>
#include <variant>
#include <vector>

namespace typed_calls {

/// The five kinds of inputs and results.
enum class Kind { number, flag, text, texts, numbers };

using Number = unsigned int;
using Flag = unsigned char;
using Text = std::string;
using Texts = std::vector<std::string>;
using Numbers = std::vector<unsigned int>;

/// An input or a result; std::monostate stands for a NULL text or list.
using Value = std::variant<std::monostate, Number, Flag, Text, Texts, Numbers>;
using Values = std::vector<Value>;

/// The kind of a value that is not NULL; throws std::logic_error for one that is.
Kind kindOf(Value const &value);

}  // namespace typed_calls

#endif
