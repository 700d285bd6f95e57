// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_MUTEX_H
#define KORVO_FRAME_MUTEX_H

#include <atomic>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/pthread/mutex.hpp>
#include <cerrno>
#include <thread>

#include "frame/thread_annotations.h"

/// A mutex that is not recursive and says so: locking it again on the thread that holds it throws the lock error
/// instead of waiting for ever. User callbacks run under such mutexes, so they can get here by mistake.
class KORVO_CAPABILITY("mutex") Mutex {
  public:
    /// Throws boost::lock_error when the calling thread holds the mutex or the platform refuses.
    void lock() KORVO_ACQUIRE() {
        if (isHeldByThisThread()) {
            boost::throw_exception(
                boost::lock_error(EDEADLK, "boost: mutex lock failed in pthread_mutex_lock"));
        }
        mutex_.lock();
        owner_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }

    void unlock() KORVO_RELEASE() {
        owner_.store(std::thread::id(), std::memory_order_relaxed);
        mutex_.unlock();
    }

    /// A thread that unlocks meanwhile makes no difference: only for the calling thread is the answer yes.
    bool isHeldByThisThread() const {
        return owner_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

  private:
    boost::mutex mutex_;
    // Only its own thread ever stores a thread's identifier here, so no order beside the mutex's is needed.
    std::atomic<std::thread::id> owner_{std::thread::id()};
};

class KORVO_SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex &mutex) KORVO_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() KORVO_RELEASE() { mutex_.unlock(); }

    MutexLock(MutexLock const &) = delete;
    MutexLock &operator=(MutexLock const &) = delete;

  private:
    Mutex &mutex_;
};

#endif
