// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_MUTEX_H
#define KORVO_PLATFORM_MUTEX_H

#include <mutex>

#include "base/thread_annotations.h"

namespace platform {

/// A std::mutex that Clang's thread-safety analysis knows.
class KORVO_CAPABILITY("mutex") Mutex {
  public:
    void lock() KORVO_ACQUIRE() { mutex_.lock(); }
    void unlock() KORVO_RELEASE() { mutex_.unlock(); }

    /// For condition variables, which take no other kind.
    std::mutex &underlying() { return mutex_; }

  private:
    std::mutex mutex_;
};

/// Holds a mutex of any kind while it lives; see Hold for work that writes log lines.
template <typename Kind>
class KORVO_SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Kind &mutex) KORVO_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() KORVO_RELEASE() { mutex_.unlock(); }

    MutexLock(MutexLock const &) = delete;
    MutexLock &operator=(MutexLock const &) = delete;

  private:
    Kind &mutex_;
};

}  // namespace platform

#endif
