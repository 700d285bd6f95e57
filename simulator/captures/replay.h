// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CAPTURES_REPLAY_H
#define KORVO_SIMULATOR_CAPTURES_REPLAY_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/captures/recording.h"
#include "simulator/time/clock.h"

namespace simulator {

/// Answers commands as a capture has it, each of its exchanges once, and tells which of its events are due.
///
/// A command is answered as the first recorded one of the same method that is not used up: one with the same parameters
/// where there is one, else one with the same identifiers (`action_id`, `trigger_id`). Which peer it was does not count.
///
/// Where the replay stands is the last of the recorded commands that were answered. The events between it and the next
/// recorded command come as long after it as they did, on the service's clock; those before the first command come as long
/// after the beginning. Where a client goes on sooner, they come before its answer. An answer that took 100 ms or longer takes
/// as long, in real time: it is what clients' time-outs go by.
class Replay {
  public:
    using Time = Clock::Time;

    struct Answer {
        std::string text;
        /// Zero for at once.
        std::chrono::milliseconds delay;
    };
    struct Reply {
        /// To be sent before the answers.
        std::vector<std::string> events;
        /// None where none was recorded.
        std::vector<Answer> answers;
        /// Why the capture does not hold it; empty where it does.
        std::string refusal;
        /// What a person may want to know beside.
        std::string note;
    };
    struct Counts {
        std::uint32_t answered = 0;
        std::uint32_t refused = 0;
        /// Recorded commands that were not asked for.
        std::uint32_t left = 0;
    };

    /// The replay begins now.
    Replay(Recording recording, Time now);

    /// What cannot be replayed as it was, in words.
    std::vector<std::string> const &remarks() const { return remarks_; }

    Reply answer(std::string_view command, Time now);
    /// The next event, if it is due.
    std::optional<std::string> takeDue(Time now);
    std::optional<Time> nextDeadline() const;
    Counts counts() const;

  private:
    using Queues = std::map<std::string, std::vector<std::size_t>>;

    void makeReady();
    std::optional<std::size_t> takeFrom(Queues &queues, std::string const &key);
    std::chrono::nanoseconds between(std::size_t first, std::size_t second) const;
    /// Takes the events that stand before a message out.
    void takeEventsBefore(std::size_t place, std::vector<std::string> &events);
    /// Where the next recorded command stands, behind all messages when there is none.
    std::size_t nextCommand() const;

    Recording recording_;
    std::vector<std::string> remarks_;
    /// Exchanges by method and all parameters, and by method and identifiers.
    Queues exact_;
    Queues loose_;
    std::vector<bool> used_;
    std::map<std::string, std::uint32_t> recorded_methods_;
    /// Places of messages.
    std::vector<std::size_t> events_;
    std::size_t next_event_ = 0;
    /// The exchange where the replay stands.
    std::optional<std::size_t> position_;
    Time position_time_;
    Counts counts_;
};

}  // namespace simulator

#endif
