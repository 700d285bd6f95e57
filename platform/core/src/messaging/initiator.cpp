// SPDX-License-Identifier: Apache-2.0
#include "messaging/initiator.h"

namespace platform {

HandleTable<Messaging> &messagingHandles() {
    // Lives as long as the process: other objects may close handles while they are destroyed.
    static auto *const table = new HandleTable<Messaging>;
    return *table;
}

Initiator::Initiator(void *logging, std::string name, RuntimeFolder folder)
    : log_(logging), name_(std::move(name)), folder_(std::move(folder)) {}

void Initiator::close() {
    std::thread thread;
    std::thread writer;
    bool is_from_callback = false;
    {
        Hold hold(mutex_, log_);
        is_closing_ = true;
        writeLast(hold);
        failures_.tellRest(hold);
        while (ConnectionPointer const connection = connectionAfter(0)) {
            lose(hold, *connection, "the initiator closes it");
        }
        wakeReceivers();
        wakeThread();
        nudgeWriter();
        writer = std::move(writer_);
        is_from_callback = onMessagingThread();
        if (is_from_callback) {
            // The thread ends by itself when the callback returns.
            thread_.detach();
        } else {
            thread = std::move(thread_);
        }
    }
    if (writer.joinable()) {
        // It makes no callbacks and waits for nobody who does.
        writer.join();
    }
    if (is_from_callback) {
        return;
    }
    if (thread.joinable()) {
        thread.join();
    }
    waitUntilLeft();
}

}  // namespace platform
