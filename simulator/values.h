// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_VALUES_H
#define KORVO_SIMULATOR_VALUES_H

// Values of commands and settings. Which members there are, and of what kind, stands in the operation table; a list of
// Values belongs to one such row and has one entry for each of its members, in their order.

#include <boost/json/fwd.hpp>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "operations/operation.h"
#include "simulator/json_writer.h"

namespace simulator {

using Texts = std::vector<std::string>;
using Numbers = std::vector<std::uint32_t>;

/// The alternatives stand in the order of operations::Kind: number, flag, text, texts, numbers.
class Value : public std::variant<std::uint32_t, bool, std::string, Texts, Numbers> {
  public:
    using variant::variant;

    // The variant's own copy destroys what was never made when the copy of an alternative throws: the library takes one of
    // texts and vectors for never without a value, which during such a copy it is.
    Value(Value const &other)
        : variant(std::visit([](auto const &held) { return variant(held); },
                             static_cast<variant const &>(other))) {}
    Value &operator=(Value const &other) {
        *this = Value(other);
        return *this;
    }
    Value(Value &&) noexcept = default;
    Value &operator=(Value &&) noexcept = default;
    ~Value() = default;
};
using Values = std::vector<Value>;

/// Reads each member of `row` from the object into `values`, which is emptied first. Other members are passed over.
/// Throws Refused (status 1) for a member that is absent or of another type, a number that is not whole or not within
/// 0 to 4294967295, and a list with such an element.
void readMembers(boost::json::object const &object, operations::Member const *row, Values &values);

/// Writes each member of `row`. The values must belong to the row.
void writeMembers(JsonWriter &writer, operations::Member const *row, Values const &values);

/// Members of this name are never told where nobody asked for them.
inline constexpr std::string_view secret_member = "password";

/// How much of the members is told.
enum class Telling {
    all,
    /// Secrets are null.
    without_secrets,
    /// The same, and of long texts and lists only the beginning.
    shortened,
};

/// The members of `row` as a JSON object.
boost::json::object objectOf(operations::Member const *row, Values const &values, Telling telling);

/// Where the member of this name stands in the row, which must have it.
std::size_t memberIndex(operations::Member const *row, std::string_view name);

/// The value of the row's member of this name and type.
template <typename T>
T const &valueOf(Values const &values, operations::Member const *row, std::string_view name) {
    return std::get<T>(values[memberIndex(row, name)]);
}

}  // namespace simulator

#endif
