// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_MAILBOX_H
#define KORVO_TESTS_PLATFORM_MAILBOX_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

/// What no test waits longer for; much longer than anything takes that does come.
constexpr std::chrono::seconds patience{20};

/// What callbacks put and tests wait for.
template <typename Message>
class Mailbox {
  public:
    void put(Message message) {
        std::lock_guard<std::mutex> const lock(mutex_);
        messages_.push_back(std::move(message));
        changed_.notify_all();
    }

    /// The next message nobody has taken yet; nothing when none comes within `limit`.
    std::optional<Message> take(std::chrono::milliseconds limit = patience) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, limit, [&] { return taken_ < messages_.size(); })) {
            return std::nullopt;
        }
        return messages_[taken_++];
    }

    /// How many have come so far.
    std::size_t count() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return messages_.size();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Message> messages_;
    std::size_t taken_ = 0;
};

/// Opened once; those who wait go on.
class Gate {
  public:
    void open() {
        std::lock_guard<std::mutex> const lock(mutex_);
        is_open_ = true;
        changed_.notify_all();
    }

    bool wait(std::chrono::milliseconds limit = patience) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return is_open_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool is_open_ = false;
};

#endif
