// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_PROCESS_H
#define KORVO_PLATFORM_PROCESS_H

// What a fork means for the core. The child gets copies of all objects, but not the threads that used them
// and no promise about their locks. So everything made before a fork belongs to an earlier generation, which
// the child recognises without a lock and leaves alone. Its copies of the descriptors are closed at once: a
// connection that only a child still holds would look alive to the peer, and a service's name would stay
// taken.

#include <mutex>

#include "base/mutex.h"
#include "base/thread_annotations.h"

namespace platform::process {

/// Grows by one in a child process; what was made under another number is inherited.
unsigned int generation() noexcept;

/// To be called after a callback on a thread of the core, with the generation that the thread was started in. A
/// callback may have forked; then this is the only thread of the child, what it was doing belongs to the
/// parent, and the child ends here, without exit handlers and with status 0.
void endOrphan(unsigned int generation_of_thread) noexcept;

/// A mutex that is free in a child process whatever other threads of the parent did while it forked. Only for
/// objects that live as long as the process. Locked in the order of construction.
class KORVO_CAPABILITY("mutex") ForkSafeMutex {
  public:
    ForkSafeMutex();
    ForkSafeMutex(ForkSafeMutex const &) = delete;
    ForkSafeMutex &operator=(ForkSafeMutex const &) = delete;

    void lock() KORVO_ACQUIRE() { mutex_.lock(); }
    void unlock() KORVO_RELEASE() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

/// Owns a descriptor: closes it at the end of its life, and in every child right after the fork.
class Descriptor {
  public:
    Descriptor() = default;
    ~Descriptor() { reset(); }

    Descriptor(Descriptor &&other) noexcept;
    Descriptor &operator=(Descriptor &&other) noexcept;

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    void reset() noexcept;

    /// Takes the descriptor that `make` makes, with no fork in between: a child that is forked at any moment closes it.
    /// `make` is a system call that does not wait. errno is that of the call. Throws std::bad_alloc.
    template <typename Make>
    static Descriptor madeBy(Make const &make) {
        Registration registration;
        return Descriptor(make(), registration);
    }

  private:
    /// Keeps forks away while it lives.
    class Registration {
      public:
        Registration();
        ~Registration() = default;
        Registration(Registration const &) = delete;
        Registration &operator=(Registration const &) = delete;

        void add(int descriptor) noexcept;

      private:
        MutexLock<Mutex> lock_;
    };

    Descriptor(int descriptor, Registration &registration) noexcept
        : descriptor_(descriptor), generation_(generation()) {
        if (descriptor_ >= 0) {
            registration.add(descriptor_);
        }
    }

    int descriptor_ = -1;
    unsigned int generation_ = 0;
};

}  // namespace platform::process

#endif
