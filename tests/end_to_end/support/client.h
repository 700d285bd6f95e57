// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_CLIENT_H
#define KORVO_TESTS_END_TO_END_CLIENT_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "client_handle.h"
#include "korvo_api_action_engine.h"
#include "processes/limits.h"

namespace end_to_end {

using namespace processes;

enum class Events { ignored, subscribed };

/// A logging handle and a client handle on it.
class Client {
  public:
    /// With messaging of its own; or with a messaging handle to share, which is closed before the client goes.
    explicit Client(Events events = Events::ignored, void *shared_messaging = nullptr);

    void *handle() const { return client_.handle(); }

    /// Closes the client handle now. Takes no longer than closing a handle may.
    void close();

  private:
    ClientHandle client_;
};

/// What a handler of Action_completed was given.
struct ActionCompleted {
    unsigned int action_id;
    std::string action_name;
    unsigned char success;
    std::string source;
};

inline bool operator==(ActionCompleted const &left, ActionCompleted const &right) {
    return left.action_id == right.action_id && left.action_name == right.action_name &&
           left.success == right.success && left.source == right.source;
}

/// A handler of Action_completed that keeps what it gets. Outlives the client that it is registered on.
class EventRecorder {
  public:
    /// Called on the messaging thread for each event, before it can be waited for.
    std::function<void(ActionCompleted const &)> also;

    void registerOn(Client const &client);
    void unregisterFrom(Client const &client);

    std::vector<ActionCompleted> events() const;
    std::size_t count() const;
    /// Waits until there are at least so many.
    bool waitForCount(std::size_t wanted, milliseconds limit = patience) const;

  private:
    static void handle(unsigned int action_id, char const *action_name, unsigned char success,
                       char const *source, void *context);

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<ActionCompleted> events_;
};

/// Something that happens once, and that other threads wait for.
class Latch {
  public:
    void open();
    bool wait(milliseconds limit = patience) const;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool open_ = false;
};

}  // namespace end_to_end

#endif
