// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CONTRACT_ARGUMENTS_H
#define KORVO_TESTS_CONTRACT_ARGUMENTS_H

// Inputs, out-pointers and callback results in their C types, held in rows.

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "expectations.h"
#include "korvo_core.h"

/// The inputs of a call in C types, with the memory behind them.
class Inputs {
  public:
    using Argument = std::variant<unsigned int, unsigned char, char const *, char **, unsigned int **>;

    explicit Inputs(std::vector<Member> const &members);
    Inputs(Inputs const &) = delete;
    Inputs &operator=(Inputs const &) = delete;

    /// Another value of the same kind in place of the sample.
    void set(std::size_t place, Content const &content);
    /// A flag that is neither 0 nor 1.
    void setFlag(std::size_t place, unsigned char value);
    void setNull(std::size_t place);

    Argument const &operator[](std::size_t place) const { return arguments_.at(place); }

  private:
    Argument argumentFor(Kind kind, Content const &content);

    std::vector<Kind> kinds_;
    std::vector<Argument> arguments_;
    std::deque<Content> contents_;
    std::deque<std::vector<char *>> text_lists_;
    std::deque<std::vector<unsigned int *>> number_lists_;
};

/// The variables behind the out-pointers of a call, filled with values that no call hands out.
class Outs {
  public:
    using Variable = std::variant<unsigned int, unsigned char, char *, char **, unsigned int **>;

    /// What list variables hold before the call: NULL, as every caller sets them, or something else.
    enum class Lists { null, occupied };

    explicit Outs(std::vector<Member> const &members, Lists lists = Lists::null);
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
    Content content(std::size_t place) const;
    std::vector<Content> contents() const;

  private:
    std::vector<Variable> variables_;
    std::vector<Variable> before_;
};

/// What a callback was told.
struct CallbackCall {
    std::optional<std::string> target;
    korvo_core_status status;
    std::vector<Content> results;
    int callback;
};

/// The context of an asynchronous call, and what its callback does.
struct Context {
    std::vector<CallbackCall> calls;
    /// Runs inside the callback, before it takes its texts and lists.
    std::function<void()> during;
    /// The callback throws a number at its end.
    bool throws = false;
};

/// Copies a callback's results, frees its texts as their owner, and leaves its lists alone.
Content take(unsigned int value);
Content take(unsigned char value);
Content take(char *text);
Content take(char **list);
Content take(unsigned int **list);

void recordCallback(Context &context, char const *target, korvo_core_status status,
                    std::vector<Content> results, int callback);

#endif
