// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_GUARDED_H
#define KORVO_SIMULATOR_GUARDED_H

#include <mutex>
#include <utility>

namespace simulator {

/// A value that can be reached only under its mutex.
template <typename T>
class Guarded {
  public:
    template <typename... Arguments>
    explicit Guarded(Arguments &&...arguments) : value_(std::forward<Arguments>(arguments)...) {}

    /// Calls the function with the value while the mutex is held, and gives what it gives. The function must keep no
    /// reference to the value.
    template <typename Function>
    decltype(auto) with(Function &&function) {
        std::lock_guard<std::mutex> const lock(mutex_);
        return std::forward<Function>(function)(value_);
    }

  private:
    std::mutex mutex_;
    T value_;
};

}  // namespace simulator

#endif
