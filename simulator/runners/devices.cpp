// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/devices.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <cmath>

namespace simulator::runners {

namespace {

boost::json::object told(Position const &position) {
    return {{"pan", position.pan}, {"tilt", position.tilt}, {"zoom", position.zoom}};
}

bool isRunning(std::optional<Clock::Time> const &since, std::chrono::seconds time, Clock::Time now) {
    return since && now < *since + time;
}

}  // namespace

void Devices::switchRelay(std::string const &relay, RelayPattern const &pattern, Time now) {
    if (relays_.size() >= most_relays && relays_.count(relay) == 0) {
        relays_.erase(std::min_element(
            relays_.begin(), relays_.end(),
            [](auto const &one, auto const &other) { return one.second.since < other.second.since; }));
    }
    relays_.insert_or_assign(relay, Relay{pattern, now});
}

void Devices::moveHead(Position const &target, Time now) {
    origin_ = headPosition(now);
    target_ = target;
    moved_ = now;
}

bool Devices::isBusy(Relay const &relay, Time now) {
    RelayPattern const &pattern = relay.pattern;
    auto const cycle = pattern.on + pattern.off;
    return cycle.count() != 0 && (now - relay.since) / cycle < std::int64_t{pattern.cycles};
}

bool Devices::isOn(Relay const &relay, Time now) {
    return isBusy(relay, now) &&
           (now - relay.since) % (relay.pattern.on + relay.pattern.off) < relay.pattern.on;
}

Position Devices::headPosition(Time now) const {
    double const way = std::max(std::abs(target_.pan - origin_.pan), std::abs(target_.tilt - origin_.tilt));
    double const moved = std::chrono::duration<double>(now - moved_).count() * head_speed;
    if (moved >= way) {
        return target_;
    }
    double const part = moved / way;
    auto const between = [part](double from, double to) { return from + (to - from) * part; };
    return {between(origin_.pan, target_.pan), between(origin_.tilt, target_.tilt),
            between(origin_.zoom, target_.zoom)};
}

boost::json::object Devices::told(Time now) const {
    boost::json::array relays;
    for (auto const &[name, relay] : relays_) {
        bool const on = isOn(relay, now);
        relays.push_back(boost::json::object{{"relay_target", name},
                                             {"on", on},
                                             {"contact_closed", on != relay.pattern.normally_closed},
                                             {"busy", isBusy(relay, now)},
                                             {"config_mode", relay.pattern.mode}});
    }
    Position const head = headPosition(now);
    return {{"relays", std::move(relays)},
            {"wiper_runs", isRunning(wiper_, wiper_time, now)},
            {"washer_runs", isRunning(washer_, washer_time, now)},
            {"head",
             {{"position", runners::told(head)},
              {"target", runners::told(target_)},
              {"moves", head.pan != target_.pan || head.tilt != target_.tilt || head.zoom != target_.zoom}}}};
}

}  // namespace simulator::runners
