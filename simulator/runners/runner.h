// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_RUNNER_H
#define KORVO_SIMULATOR_RUNNERS_RUNNER_H

#include <deque>
#include <functional>
#include <string>

#include "simulator/engine.h"
#include "simulator/log.h"
#include "simulator/runners/delivery.h"
#include "simulator/runners/devices.h"
#include "simulator/runners/logins.h"
#include "simulator/runners/transfers.h"

namespace simulator::runners {

/// Runs actions on what stands in for a camera's picture, head, outputs and network. What is not live is only recorded.
/// For one thread at a time.
class Runner {
  public:
    struct Folders {
        /// For the pictures of snapshot actions.
        std::string snapshots;
        /// For the mails and uploads that a camera would send.
        std::string outbox;
    };

    /// What really leaves the machine.
    struct Live {
        bool mail = false;
        bool ftp = false;
        /// For mails.
        Logins logins{};
        /// Not NULL where something is live; outlives the runner.
        Transfers *transfers = nullptr;
    };

    /// `wall` tells the time that mails, file names and pictures show, `now` the one that devices go by.
    Runner(Folders folders, std::function<Wall()> wall, std::function<Clock::Time()> now, Log const &log,
           Live live);
    /// With nothing live.
    Runner(Folders folders, std::function<Wall()> wall, std::function<Clock::Time()> now, Log const &log);

    using Done = std::function<void(RunResult)>;
    /// Runs an action, logs what it did or why it failed, and calls back: at once, or from finish() for what takes its time
    /// elsewhere. Throws what the callback throws.
    void run(Job const &job, Done const &done);

    /// Calls back for what is over.
    void finish();

    /// Where the head goes, or is.
    Position const &headTarget() const { return devices_.headTarget(); }
    /// The state of the devices, and the pictures that were saved last, newest first.
    boost::json::object devices() const;

  private:
    /// These give what was done, in words, and throw when it could not be done.
    std::string perform(Job const &job);
    std::string recordMail(Job const &job);
    std::string recordUpload(Job const &job);
    std::string saveSnapshot(Job const &job);
    std::string moveHead(Job const &job, char const *what, char const *id_member);
    std::string switchRelay(Job const &job);

    bool isLive(EntryKind const &kind) const;
    void send(Job const &job, std::string const &action, Done const &done);
    Delivery mail(Job const &job) const;
    /// Writes the log line of a run that is over.
    void tell(std::string const &action, RunResult const &result) const;

    /// A name in the outbox that no file has had.
    std::string outboxName(Job const &job, char const *what, char const *ending);

    Folders folders_;
    std::function<Wall()> wall_;
    Log const &log_;
    std::function<Clock::Time()> now_;
    Live live_;
    Devices devices_;
    std::deque<std::string> pictures_;
    unsigned int outbox_count_ = 0;
};

}  // namespace simulator::runners

#endif
