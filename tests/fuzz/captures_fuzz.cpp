// SPDX-License-Identifier: Apache-2.0
// Any text must be read as a capture or refused with a reason that says where; what was read can be replayed, each of its
// commands as often as it is there, and gives a catalogue.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "simulator/captures/rebuilding.h"
#include "simulator/captures/recording.h"
#include "simulator/captures/replay.h"

namespace {

void replay(simulator::Recording const &recording) {
    constexpr simulator::Replay::Time start{std::chrono::hours(1)};
    simulator::Replay replay(recording, start);
    std::size_t events = 0;
    std::size_t shown = 0;
    for (simulator::Recording::Message const &message : recording.messages) {
        shown += message.isEvent() && message.text ? 1U : 0U;
        if (message.direction == simulator::Capture::Direction::to_service && message.text) {
            events += replay.answer(*message.text, start).events.size();
        }
    }
    for (auto due = replay.nextDeadline(); due; due = replay.nextDeadline()) {
        if (!replay.takeDue(*due)) {
            std::abort();
        }
        ++events;
    }
    // All was asked for, so nothing is left.
    if (replay.counts().left != 0 || events != shown) {
        std::abort();
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    std::istringstream stream(std::string(reinterpret_cast<char const *>(data), size));
    try {
        simulator::Recording const recording = simulator::readRecording(stream);
        replay(recording);
        (void)simulator::catalogueIn(recording);
    } catch (simulator::CaptureError const &error) {
        std::string_view const why = error.what();
        if (why.substr(0, 5) != "line " && why != "it holds no message") {
            std::abort();
        }
    }
    return 0;
}
