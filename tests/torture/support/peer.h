// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_PEER_H
#define KORVO_TESTS_TORTURE_PEER_H

#include <atomic>
#include <string>

#include "korvo_core.h"

namespace torture {

/// A service in this process: it answers each command with the command, or keeps silent. Its own work never fails, unless it
/// is asked to take part: then its thread is one of those that are recorded.
class Peer {
  public:
    static constexpr char const *service = "torture";

    enum class Memory { safe, fails };
    explicit Peer(Memory memory = Memory::safe, char const *target = "");
    ~Peer();
    Peer(Peer const &) = delete;
    Peer &operator=(Peer const &) = delete;

    /// Nobody listens any more; what is connected is lost.
    void close();
    void open();

    korvo_core_status publish(std::string const &event) const;
    /// From now on commands are taken and not answered.
    void keepSilent(bool wanted) { is_silent_ = wanted; }
    /// Commands that have come so far.
    unsigned int commands() const { return commands_; }

  private:
    static void take(char **source, char **request_id, char **command, void *context);

    Memory const memory_;
    char const *const target_;
    void *handle_ = nullptr;
    std::atomic<bool> is_silent_{false};
    std::atomic<unsigned int> commands_{0};
};

}  // namespace torture

#endif
