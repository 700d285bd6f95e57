// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_CLIENT_H
#define KORVO_BENCH_CLIENT_H

#include <string>

/// A handle of the client library, with a logging handle, as long as the object lives.
class Client {
  public:
    /// Throws std::runtime_error.
    Client();
    ~Client();

    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    void *handle() const { return handle_; }
    void *logging() const { return logging_; }

    /// Returns the identifier of a new relay action.
    unsigned int createRelayAction() const;

  private:
    void *logging_ = nullptr;
    void *handle_ = nullptr;
};

/// The command, JSON, to `method` with the identifier of an action as its only input.
std::string commandFor(char const *method, unsigned int action_id);

#endif
