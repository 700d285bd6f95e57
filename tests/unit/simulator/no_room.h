// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_NO_ROOM_H
#define KORVO_TESTS_UNIT_SIMULATOR_NO_ROOM_H

#include <sys/resource.h>

#include <csignal>
#include <cstdint>

namespace simulator::tests {

/// Lets no file of this process grow beyond so many bytes, as on a full disk.
class NoRoom {
  public:
    explicit NoRoom(std::uintmax_t bytes) {
        previous_handler_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~NoRoom() {
        setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previous_handler_);
    }
    NoRoom(NoRoom const &) = delete;
    NoRoom &operator=(NoRoom const &) = delete;

  private:
    rlimit previous_{};
    void (*previous_handler_)(int);
};

}  // namespace simulator::tests

#endif
