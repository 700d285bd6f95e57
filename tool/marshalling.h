// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_MARSHALLING_H
#define KORVO_TOOL_MARSHALLING_H

// Inputs and results as JSON objects, and in the types of C.

#include <boost/json/object.hpp>
#include <deque>
#include <string>
#include <vector>

#include "tool/operations.h"

namespace tool {

/// The inputs of a call, with the memory behind them.
class Inputs {
  public:
    /// Throws a Failure that names the member which is missing, unknown or of another type.
    Inputs(Operation const &operation, boost::json::object const &members);
    Inputs(Inputs const &) = delete;
    Inputs &operator=(Inputs const &) = delete;

    Slot const *slots() const { return slots_.data(); }

  private:
    Slot slotFor(Member const &member, boost::json::value const &value);

    std::vector<Slot> slots_;
    std::deque<std::string> texts_;
    std::deque<unsigned int> numbers_;
    std::deque<std::vector<char *>> text_lists_;
    std::deque<std::vector<unsigned int *>> number_lists_;
};

/// Where a call puts its results.
class Results {
  public:
    explicit Results(Operation const &operation)
        : operation_(&operation), slots_(operation.results.size() + 1) {}
    /// Frees what the call has handed out.
    ~Results();
    Results(Results const &) = delete;
    Results &operator=(Results const &) = delete;

    Slot *slots() { return slots_.data(); }
    boost::json::object members() const;

  private:
    Operation const *operation_;
    std::vector<Slot> slots_;
};

/// "a whole number", "a list of texts", ...
char const *typeOf(Kind kind);

}  // namespace tool

#endif
