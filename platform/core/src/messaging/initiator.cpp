// SPDX-License-Identifier: Apache-2.0
#include "messaging/initiator.h"

#include <atomic>

namespace platform {

namespace {

std::uint64_t nextInitiator() {
    static std::atomic<std::uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

}  // namespace

HandleTable<Messaging> &messagingHandles() {
    // Lives as long as the process: other objects may close handles while they are destroyed.
    static auto *const table = new HandleTable<Messaging>;
    return *table;
}

Initiator::Initiator(void *logging, std::string name, RuntimeFolder folder)
    : log_(logging), name_(std::move(name)), folder_(std::move(folder)), serial_(nextInitiator()) {}

void Initiator::close() {
    std::thread thread;
    {
        Hold hold(mutex_, log_);
        is_closing_ = true;
        while (!connections_.empty()) {
            ConnectionPointer const connection = connections_.back();
            lose(hold, *connection, "the initiator closes it");
        }
        wakeReceivers();
        wakeThread();
        if (onMessagingThread()) {
            // Called from inside a callback: the thread ends by itself when the callback returns.
            thread_.detach();
            return;
        }
        thread = std::move(thread_);
    }
    if (thread.joinable()) {
        thread.join();
    }
}

}  // namespace platform
