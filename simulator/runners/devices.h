// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_DEVICES_H
#define KORVO_SIMULATOR_RUNNERS_DEVICES_H

#include <boost/json/object.hpp>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "simulator/runners/ptz_head.h"
#include "simulator/time/clock.h"

namespace simulator::runners {

/// How a relay is switched: on for a while, off for a while, so many times.
struct RelayPattern {
    std::uint32_t mode;
    bool normally_closed;
    std::uint32_t cycles;
    std::chrono::milliseconds on;
    std::chrono::milliseconds off;
};

/// What stands in for a camera's outputs and head. They take their time on the service's clock: what they do at a moment
/// follows from what they were told last and when, so nothing waits for them. For one thread at a time.
class Devices {
  public:
    using Time = Clock::Time;

    /// Relays beyond so many are not followed: the one that was switched longest ago is forgotten.
    static constexpr std::size_t most_relays = 256;
    static constexpr std::chrono::seconds wiper_time{3};
    static constexpr std::chrono::seconds washer_time{5};
    /// Degrees a second.
    static constexpr double head_speed = 60;

    /// A device that is busy is told anew: what it did is over.
    void switchRelay(std::string const &relay, RelayPattern const &pattern, Time now);
    void runWiper(Time now) { wiper_ = now; }
    void runWasher(Time now) { washer_ = now; }
    void moveHead(Position const &target, Time now);

    Position headPosition(Time now) const;
    Position const &headTarget() const { return target_; }

    /// All of them as docs/simulator-control.md describes them.
    boost::json::object told(Time now) const;

  private:
    struct Relay {
        RelayPattern pattern;
        Time since;
    };
    static bool isOn(Relay const &relay, Time now);
    static bool isBusy(Relay const &relay, Time now);

    std::map<std::string, Relay> relays_;
    std::optional<Time> wiper_;
    std::optional<Time> washer_;
    Position origin_{0, 0, 1};
    Position target_{0, 0, 1};
    Time moved_{};
};

}  // namespace simulator::runners

#endif
