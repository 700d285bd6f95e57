// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CAPTURE_H
#define KORVO_SIMULATOR_CAPTURE_H

#include <string>
#include <string_view>

#include "simulator/guarded.h"
#include "simulator/log.h"
#include "simulator/time/moment.h"

namespace simulator {

/// Writes what goes to and from the service into a file, one JSON object a line, for a report of a fault. On any thread.
class Capture {
  public:
    enum class Direction { to_service, from_service };
    enum class Secrets { hidden, shown };

    /// Adds to the file, which is made readable by its owner only where it is new. Throws std::runtime_error.
    Capture(std::string const &path, Secrets secrets, Log const &log);
    ~Capture();
    Capture(Capture const &) = delete;
    Capture &operator=(Capture const &) = delete;

    /// An empty peer is everybody: an event. What cannot be written is left out, which the log tells the first time.
    void note(Wall time, std::string_view peer, Direction direction, std::string_view text) noexcept;

    /// The line of one message, with its end. With hidden secrets passwords are null, and so is a text that is no JSON and
    /// may hold one.
    static std::string line(Wall time, std::string_view peer, Direction direction, std::string_view text,
                            Secrets secrets);

  private:
    Secrets secrets_;
    Log const &log_;
    int file_;
    /// Whether something could not be written.
    Guarded<bool> failed_{false};
};

}  // namespace simulator

#endif
