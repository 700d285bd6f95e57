// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_FAILURE_H
#define KORVO_TOOL_FAILURE_H

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace tool {

/// What the program ends with. Scripts rely on the values.
enum class Exit : int {
    done = 0,
    other = 1,
    usage = 2,
    time_out = 3,
    no_service = 4,
    refused = 5,
    no_such_identifier = 6,
    version = 7,
    not_permitted = 8,
    interrupted = 130,
};

/// An exit code with its name in JSON, and what it means.
struct ExitRow {
    Exit code;
    char const *name;
    char const *meaning;
};

/// All of them, ascending.
std::array<ExitRow, 10> const &exitRows();
char const *nameOf(Exit code);

/// Why a command could not be done, in words for people, and what to do about it.
class Failure : public std::runtime_error {
  public:
    Failure(Exit code, std::string const &what, std::string advice = "", int status = -1)
        : std::runtime_error(what), code_(code), advice_(std::move(advice)), status_(status) {}

    Exit code() const { return code_; }
    std::string const &advice() const { return advice_; }
    /// The status of the call that failed; -1 when it was no call.
    int status() const { return status_; }

  private:
    Exit code_;
    std::string advice_;
    int status_;
};

/// The reader of standard output is gone, which is no error.
class ReaderGone : public std::exception {};

}  // namespace tool

#endif
