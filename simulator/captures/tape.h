// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CAPTURES_TAPE_H
#define KORVO_SIMULATOR_CAPTURES_TAPE_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/captures/capture.h"
#include "simulator/captures/replay.h"
#include "simulator/guarded.h"
#include "simulator/log.h"
#include "simulator/refusal_log.h"

namespace simulator {

/// The capture that is written and the replay that answers, where there are any. On any thread.
class Tape {
  public:
    explicit Tape(Log const &log);

    /// Throws std::runtime_error, and Refused while there is a capture.
    void startCapture(std::string const &path, Capture::Secrets secrets, Capture::Existing existing);
    /// Gives how many messages the capture has got. Throws Refused where there is none.
    std::uint32_t stopCapture();
    void note(Wall time, Capture::Message const &message) noexcept;

    /// Throws CaptureError, and Refused while there is a replay.
    void startReplay(std::string const &path, Replay::Time now);
    /// Throws Refused where there is none.
    Replay::Counts stopReplay();
    bool replays();

    /// Sends; called while no other thread sends what is replayed, so that the order holds.
    struct Outlets {
        std::function<void(std::string const &)> publish;
        std::function<void(Replay::Answer const &)> answer;
    };
    /// False where there is no replay.
    bool answer(std::string_view command, Replay::Time now, Outlets const &outlets);
    void sendDue(Replay::Time now, std::function<void(std::string const &)> const &publish);
    std::optional<Replay::Time> nextDeadline();

  private:
    struct Replaying {
        std::optional<Replay> replay;
        RefusalLog refusals;
    };

    Log const &log_;
    Guarded<std::unique_ptr<Capture>> capture_;
    Guarded<Replaying> replaying_;
};

}  // namespace simulator

#endif
