// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_EPOLL_H
#define KORVO_PLATFORM_EPOLL_H

#include <sys/epoll.h>

#include <cstdint>

#include "base/process.h"

namespace platform {

/// A set of descriptors that one thread waits for, each with a number that tells what it is. Not open until open() has
/// returned; until then, and after close(), changes do nothing.
class Epoll {
  public:
    /// Throws std::system_error.
    void open();
    void close() noexcept { epoll_.reset(); }
    bool isOpen() const { return static_cast<bool>(epoll_); }

    /// Each returns whether the set now is as asked for. `events` is EPOLLIN, EPOLLOUT, both or 0; ends and failures of
    /// the descriptor are always told.
    bool add(int descriptor, std::uint64_t tag, unsigned int events) noexcept;
    bool change(int descriptor, std::uint64_t tag, unsigned int events) noexcept;
    bool remove(int descriptor) noexcept;

    /// For epoll_wait(), which is called with no lock held; the set is not closed meanwhile.
    int descriptor() const { return epoll_.get(); }

  private:
    bool control(int operation, int descriptor, std::uint64_t tag, unsigned int events) noexcept;

    process::Descriptor epoll_;
};

}  // namespace platform

#endif
