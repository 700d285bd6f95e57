// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TYPED_CALLS_ARGUMENTS_H
#define KORVO_TESTS_TYPED_CALLS_ARGUMENTS_H

// Inputs, out-pointers and callback results in their C types, held in rows.

#include <cstddef>
#include <deque>
#include <variant>
#include <vector>

#include "korvo_core.h"
#include "typed_calls/values.h"

namespace typed_calls {

/// The inputs of a call in C types, with the memory behind them.
class Inputs {
  public:
    using Argument = std::variant<unsigned int, unsigned char, char const *, char **, unsigned int **>;

    /// None of the values is NULL; setNull() makes one so.
    explicit Inputs(Values const &values);
    Inputs(Inputs const &) = delete;
    Inputs &operator=(Inputs const &) = delete;

    /// Another value of the same kind.
    void set(std::size_t place, Value const &value);
    /// A flag that is neither 0 nor 1.
    void setFlag(std::size_t place, unsigned char value);
    void setNull(std::size_t place);

    Argument const &operator[](std::size_t place) const { return arguments_.at(place); }

  private:
    Argument argumentFor(Kind kind, Value const &value);

    std::vector<Kind> kinds_;
    std::vector<Argument> arguments_;
    std::deque<Value> values_;
    std::deque<std::vector<char *>> text_lists_;
    std::deque<std::vector<unsigned int *>> number_lists_;
};

/// The variables behind the out-pointers of a call, filled with values that no call hands out.
class Outs {
  public:
    using Variable = std::variant<unsigned int, unsigned char, char *, char **, unsigned int **>;

    /// What list variables hold before the call: NULL, as every caller sets them, or something else.
    enum class Lists { null, occupied };

    explicit Outs(std::vector<Kind> const &kinds, Lists lists = Lists::null);
    /// Frees what the call handed out, as its caller would.
    ~Outs();
    Outs(Outs const &) = delete;
    Outs &operator=(Outs const &) = delete;

    void occupy(std::size_t place);

    Variable &operator[](std::size_t place) { return variables_.at(place); }

    bool written(std::size_t place) const;
    /// True when no variable was written.
    bool untouched() const;

    /// The value of a variable that was written.
    Value value(std::size_t place) const;
    Values values() const;

  private:
    std::vector<Variable> variables_;
    std::vector<Variable> before_;
};

/// Copies a callback's results, frees its texts as their owner, and leaves its lists alone.
Value take(unsigned int value);
Value take(unsigned char value);
Value take(char *text);
Value take(char **list);
Value take(unsigned int **list);

}  // namespace typed_calls

#endif
