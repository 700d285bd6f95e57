// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEER_PROCESS_H
#define KORVO_BENCH_PEER_PROCESS_H

#include <string>

#include "listeners.h"
#include "peers/peer.h"

/// A peer's service in a process of its own, as long as the object lives. Made before this process has connections or
/// threads: they would be inherited.
class PeerProcess {
  public:
    /// Serves at a path in the folder. Returns once clients may connect; throws std::runtime_error.
    PeerProcess(Peer const &peer, std::string const &folder)
        : path_(folder + "/" + peer.name()),
          process_(1, [&](int, Listeners::Tell const &tell) { peer.serve(path_, tell); }) {
        process_.waitForAll();
    }

    std::string const &path() const { return path_; }
    pid_t process() const { return process_.processes().front(); }

  private:
    std::string path_;
    Listeners process_;
};

#endif
