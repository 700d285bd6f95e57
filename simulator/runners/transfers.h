// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_TRANSFERS_H
#define KORVO_SIMULATOR_RUNNERS_TRANSFERS_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <set>
#include <string>

#include "simulator/engine.h"
#include "simulator/guarded.h"
#include "simulator/log.h"
#include "simulator/runners/delivery.h"

struct curl_sockaddr;

namespace simulator::runners {

/// Sends mails and uploads, each on a thread of its own: a server that hangs delays nobody else. (libcurl says goodbye to a
/// server and waits for its answer, so that one thread for all would hang with the worst of them.)
///
/// TLS is used where a server offers it, and then its certificate must be good.
class Transfers {
  public:
    struct Settings {
        /// For the whole transfer, the server's name looked up included.
        std::chrono::milliseconds time_out;
        /// The authorities to believe, in PEM; empty for the machine's.
        std::string authorities;
    };
    using Done = std::function<void(RunResult)>;

    /// So many are on their way at a time, to one server and to all.
    static constexpr std::size_t most_to_a_server = 16;
    static constexpr std::size_t most = 64;

    /// `over` is called on the threads that send when finish() has something to do. Throws std::runtime_error.
    Transfers(Settings settings, std::function<void()> over, Log const &log);
    /// Gives up what is on its way, at once; nobody is told but the log.
    ~Transfers();

    Transfers(Transfers const &) = delete;
    Transfers &operator=(Transfers const &) = delete;

    /// Begins to send, and calls back from finish(). With `only_with_tls` nothing is told to a server that does not offer TLS
    /// but a greeting. Throws std::runtime_error when too much is on its way already, and then nothing is sent.
    void begin(Delivery delivery, bool only_with_tls, Done done);

    /// Calls back for what is over. One thread at a time. Throws std::bad_alloc; what is not told of then is with the next call.
    void finish();

  private:
    struct Transfer;
    /// Elements move from list to list without memory being taken.
    using List = std::list<Transfer>;
    struct Shared {
        List on_way;
        List over;
        std::map<std::string, std::size_t> of_server;
        std::size_t count = 0;
    };

    void prepare(Transfer &transfer, bool only_with_tls);
    static void forget(Shared &shared, std::string const &place) noexcept;
    void work(List::iterator transfer) noexcept;

    // What libcurl calls.
    static int openSocket(void *context, int purpose, curl_sockaddr *address) noexcept;
    static int closeSocket(void *context, int socket) noexcept;
    static int isToStop(void *context, std::int64_t, std::int64_t, std::int64_t, std::int64_t) noexcept;

    Settings settings_;
    std::function<void()> over_;
    Log const &log_;
    Guarded<Shared> shared_;
    /// All that are open.
    Guarded<std::set<int>> sockets_;
    std::atomic<bool> stop_{false};
};

}  // namespace simulator::runners

#endif
