// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_SYSTEM_CALLS_H
#define KORVO_TESTS_TORTURE_SYSTEM_CALLS_H

// System calls that fail. The functions of the C library that make them are replaced in every program that this is linked
// into; only calls of threads that live_blocks records are counted.

#include <cstddef>
#include <string_view>

namespace torture {

/// In place of an error: the call does its work for one byte.
constexpr int one_byte = -1;

/// While one of these lives, the nth call (1 is the first) of one function fails. One at a time.
class FailingCall {
  public:
    /// `error` is an errno value, or one_byte for what reads or writes bytes.
    FailingCall(char const *function, int error, std::size_t nth);
    ~FailingCall() { stop(); }
    FailingCall(FailingCall const &) = delete;
    FailingCall &operator=(FailingCall const &) = delete;

    void stop();
    bool hasFailed() const;
    int error() const { return error_; }

    /// How often threads that are recorded have waited in epoll_wait() so far.
    static std::size_t waits();

  private:
    int const error_;
};

}  // namespace torture

#endif
