// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_MESSAGING_H
#define KORVO_PLATFORM_MESSAGING_H

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "base/handles.h"
namespace platform {

class Initiator;
class Target;

/// What a messaging handle names.
class Messaging {
  public:
    Messaging() = default;
    virtual ~Messaging() = default;
    Messaging(Messaging const &) = delete;
    Messaging &operator=(Messaging const &) = delete;

    /// Ends all traffic: calls that wait in other threads return, connections are closed, and no callback is
    /// made any more. Waits for a callback that is running, unless it is the one that called. Called once.
    virtual void close() = 0;
    /// A call of a function with this handle, while it lasts.
    class Use {
      public:
        explicit Use(Messaging &messaging) : messaging_(messaging) { ++messaging_.uses_; }
        ~Use() {
            if (--messaging_.uses_ == 0 && messaging_.is_waited_for_) {
                std::lock_guard<std::mutex> const lock(messaging_.uses_mutex_);
                messaging_.left_.notify_all();
            }
        }
        Use(Use const &) = delete;
        Use &operator=(Use const &) = delete;

      private:
        Messaging &messaging_;
    };

    virtual Initiator *asInitiator() { return nullptr; }
    virtual Target *asTarget() { return nullptr; }

  protected:
    /// Waits until no call uses the object; such calls must be about to end.
    void waitUntilLeft() {
        is_waited_for_ = true;
        std::unique_lock<std::mutex> lock(uses_mutex_);
        left_.wait(lock, [&] { return uses_ == 0; });
    }

  private:
    std::atomic<unsigned int> uses_{0};
    std::atomic<bool> is_waited_for_{false};
    std::mutex uses_mutex_;
    std::condition_variable left_;
};
HandleTable<Messaging> &messagingHandles();

}  // namespace platform

#endif
