// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_RESULT_HPP
#define KORVO_RESULT_HPP

// What a call has come to: a value, or a status that says why there is none.

#if !defined(__cpp_exceptions)
#error \
    "korvo/action_engine.hpp needs C++ exceptions: compile without -fno-exceptions, or use korvo_api_action_engine.h"
#endif
#if __cplusplus < 201703L
#error "korvo/action_engine.hpp needs C++17: compile with -std=c++17 or later"
#endif

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "korvo_core.h"

namespace korvo {

/// Why a call has no value. `operation` and `reason` are constant texts; `reason` is NULL where the status says all.
struct Failure {
    korvo_core_status status = KORVO_CORE_STATUS_IPC_FAILED;
    char const *operation = "";
    char const *reason = nullptr;

    /// "create_association: status 9 (remote function failure)", for people.
    std::string message() const {
        std::string text = operation;
        text += ": status " + std::to_string(static_cast<unsigned int>(status)) + " (";
        text += korvo_core_status_to_string(status);
        text += ")";
        if (reason != nullptr) {
            text += std::string(": ") + reason;
        }
        return text;
    }
};

/// What value() throws.
class Error : public std::runtime_error {
  public:
    explicit Error(Failure const &failure) : std::runtime_error(failure.message()), status_(failure.status) {}

    korvo_core_status status() const noexcept { return status_; }

  private:
    korvo_core_status status_;
};

/// A value, or the failure that stands in its place. Must be looked at: a result that is dropped is a warning.
template <typename T>
class [[nodiscard]] Result {
  public:
    Result(T value) : value_(std::move(value)), failure_{KORVO_CORE_STATUS_NO_ERROR, "", nullptr} {}
    Result(Failure const &failure) noexcept : failure_(failure) {}

    explicit operator bool() const noexcept { return value_.has_value(); }

    /// 0 exactly when there is a value.
    korvo_core_status status() const noexcept { return failure_.status; }
    /// Says what failed, with which status and why; empty when there is a value.
    std::string message() const { return value_.has_value() ? std::string() : failure_.message(); }

    /// The value; throws korvo::Error when there is none.
    T &value() & { return checked(*this); }
    T const &value() const & { return checked(*this); }
    /// By value, so that what a range-based for walks through outlives the result.
    T value() && { return std::move(checked(*this)); }

  private:
    template <typename Self>
    static auto &checked(Self &self) {
        if (!self.value_) {
            throw Error(self.failure_);
        }
        return *self.value_;
    }

    std::optional<T> value_;
    Failure failure_;
};

/// Of an operation without results: that it was done, or why not.
template <>
class [[nodiscard]] Result<void> {
  public:
    Result() noexcept : failure_{KORVO_CORE_STATUS_NO_ERROR, "", nullptr} {}
    Result(Failure const &failure) noexcept : failure_(failure) {}

    explicit operator bool() const noexcept { return failure_.status == KORVO_CORE_STATUS_NO_ERROR; }

    korvo_core_status status() const noexcept { return failure_.status; }
    std::string message() const { return *this ? std::string() : failure_.message(); }

    /// Throws korvo::Error when it was not done.
    void value() const {
        if (!*this) {
            throw Error(failure_);
        }
    }

  private:
    Failure failure_;
};

}  // namespace korvo

#endif
