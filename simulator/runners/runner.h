// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_RUNNER_H
#define KORVO_SIMULATOR_RUNNERS_RUNNER_H

#include <deque>
#include <functional>
#include <string>

#include "simulator/engine.h"
#include "simulator/log.h"
#include "simulator/runners/devices.h"

namespace simulator::runners {

/// Runs actions on what stands in for a camera's picture, head, outputs and network. Nothing ever leaves the machine.
/// For one thread at a time.
class Runner {
  public:
    struct Folders {
        /// For the pictures of snapshot actions.
        std::string snapshots;
        /// For the mails and uploads that a camera would send.
        std::string outbox;
    };

    /// `wall` tells the time that mails, file names and pictures show, `now` the one that devices go by.
    Runner(Folders folders, std::function<Wall()> wall, std::function<Clock::Time()> now, Log const &log);

    /// Runs an action and logs what it did or why it failed. Throws nothing.
    RunResult run(Job const &job) noexcept;

    /// Where the head goes, or is.
    Position const &headTarget() const { return devices_.headTarget(); }
    /// The state of the devices, and the pictures that were saved last, newest first.
    boost::json::object devices() const;

  private:
    /// These give what was done, in words, and throw when it could not be done.
    std::string perform(Job const &job);
    std::string sendEmail(Job const &job);
    std::string upload(Job const &job);
    std::string saveSnapshot(Job const &job);
    std::string moveHead(Job const &job, char const *what, char const *id_member);
    std::string switchRelay(Job const &job);

    /// A name in the outbox that no file has had.
    std::string outboxName(Job const &job, char const *what, char const *ending);

    Folders folders_;
    std::function<Wall()> wall_;
    Log const &log_;
    std::function<Clock::Time()> now_;
    Devices devices_;
    std::deque<std::string> pictures_;
    unsigned int outbox_count_ = 0;
};

}  // namespace simulator::runners

#endif
