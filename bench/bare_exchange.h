// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_BARE_EXCHANGE_H
#define KORVO_BENCH_BARE_EXCHANGE_H

#include <sys/types.h>

#include <cstddef>
#include <string>

/// A process that answers each request of so many bytes with a response of so many bytes: what an exchange costs
/// when nobody builds, reads or routes anything.
class BareExchange {
  public:
    BareExchange(std::string request, std::string response);
    ~BareExchange();

    BareExchange(BareExchange const &) = delete;
    BareExchange &operator=(BareExchange const &) = delete;

    /// Writes the request, in so many equal pieces, and reads the whole response.
    void call(std::size_t pieces = 1);

    /// The last response.
    std::string const &received() const { return received_; }

    pid_t process() const { return process_; }

  private:
    std::string const request_;
    std::string received_;
    int socket_;
    pid_t process_;
};

#endif
