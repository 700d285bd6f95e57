// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_CLIENT_H
#define KORVO_BENCH_CLIENT_H

#include <string>

#include "by_hand.h"
#include "peers/contents.h"

/// A handle of the client library, with a logging handle, as long as the object lives.
class Client {
  public:
    /// `messaging` is shared, or NULL for messaging of its own. Throws std::runtime_error.
    explicit Client(void *messaging = nullptr, bool subscribes = false);
    ~Client();

    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    void *handle() const { return handle_; }
    void *logging() const { return logging_; }

    /// Asks for contents::action_id.
    void getRelay(Relay &relay) const;
    void getLists(by_hand::BlockLists &lists) const;

    /// Returns the identifier of a new relay action, whose settings are what `contents` holds.
    unsigned int createRelayAction() const;
    /// Makes the service, which must be empty, keep what `contents` holds.
    void createContents() const;

  private:
    void *logging_ = nullptr;
    void *handle_ = nullptr;
};

/// The command, JSON, to `method` with the identifier of an action as its only input.
std::string commandFor(char const *method, unsigned int action_id);

#endif
