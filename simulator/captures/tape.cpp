// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/tape.h"

#include <new>
#include <utility>

#include "simulator/refused.h"

namespace simulator {

Tape::Tape(Log const &log) : log_(log), replaying_(Replaying{std::nullopt, RefusalLog(log)}) {}

void Tape::startCapture(std::string const &path, Capture::Secrets secrets, Capture::Existing existing) {
    capture_.with([&](std::unique_ptr<Capture> &capture) {
        if (capture != nullptr) {
            throw impossible("messages are captured already; stop that first");
        }
        capture = std::make_unique<Capture>(path, secrets, existing, log_);
    });
}

std::uint32_t Tape::stopCapture() {
    return capture_.with([](std::unique_ptr<Capture> &capture) {
        if (capture == nullptr) {
            throw impossible("no messages are captured");
        }
        return std::exchange(capture, nullptr)->count();
    });
}

void Tape::note(Wall time, Capture::Message const &message) noexcept {
    capture_.with([&](std::unique_ptr<Capture> const &capture) {
        if (capture != nullptr) {
            capture->note(time, message);
        }
    });
}

void Tape::startReplay(std::string const &path, Replay::Time now) {
    // Without the lock: it can take a while.
    Replay replay(readCapture(path), now);
    replaying_.with([&](Replaying &replaying) {
        if (replaying.replay) {
            throw impossible("a capture is replayed already; stop that first");
        }
        for (std::string const &remark : replay.remarks()) {
            log_.warning("replay: " + remark);
        }
        replaying.replay.emplace(std::move(replay));
    });
}

Replay::Counts Tape::stopReplay() {
    return replaying_.with([](Replaying &replaying) {
        if (!replaying.replay) {
            throw impossible("no capture is replayed");
        }
        Replay::Counts const counts = replaying.replay->counts();
        replaying.replay.reset();
        return counts;
    });
}

bool Tape::replays() {
    return replaying_.with([](Replaying const &replaying) { return replaying.replay.has_value(); });
}

bool Tape::answer(std::string_view command, Replay::Time now, Outlets const &outlets) {
    return replaying_.with([&](Replaying &replaying) {
        if (!replaying.replay) {
            return false;
        }
        Replay::Reply const reply = replaying.replay->answer(command, now);
        for (std::string const &event : reply.events) {
            outlets.publish(event);
        }
        for (Replay::Answer const &answer : reply.answers) {
            outlets.answer(answer);
        }
        try {
            if (!reply.refusal.empty()) {
                std::string const name = commandNameIn(command);
                replaying.refusals.tell(name.empty() ? "a command" : quoted(name), reply.refusal);
            }
            if (!reply.note.empty()) {
                log_.info("replay: " + reply.note);
            }
        } catch (std::bad_alloc const &) {
            // The command is answered, and must not be answered again because nobody is told why.
        }
        return true;
    });
}

void Tape::sendDue(Replay::Time now, std::function<void(std::string const &)> const &publish) {
    replaying_.with([&](Replaying &replaying) {
        while (replaying.replay) {
            auto const event = replaying.replay->takeDue(now);
            if (!event) {
                return;
            }
            publish(*event);
        }
    });
}

std::optional<Replay::Time> Tape::nextDeadline() {
    return replaying_.with([](Replaying const &replaying) {
        return replaying.replay ? replaying.replay->nextDeadline() : std::nullopt;
    });
}

}  // namespace simulator
