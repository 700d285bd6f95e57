// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CAPTURES_RECORDING_H
#define KORVO_SIMULATOR_CAPTURES_RECORDING_H

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/captures/capture.h"
#include "simulator/time/moment.h"

namespace simulator {

/// A capture, read.
struct Recording {
    struct Message {
        /// In the file, from 1.
        std::size_t line = 0;
        Wall time{};
        /// Empty for events.
        std::string peer{};
        /// Empty where the capture does not tell it.
        std::string request{};
        Capture::Direction direction = Capture::Direction::to_service;
        /// None where it was hidden as a whole.
        std::optional<std::string> text{};

        bool isEvent() const { return peer.empty(); }
    };

    /// A command and what answered it, as places in `messages`: none, or several of them after a fault.
    struct Exchange {
        std::size_t command = 0;
        std::vector<std::size_t> answers{};
    };

    std::vector<Message> messages;
    /// In the order of their commands.
    std::vector<Exchange> exchanges;
    /// Answers to commands from before the capture began.
    std::size_t strays = 0;
};

/// A capture that cannot be read. what() says in which line, and what was wrong there.
class CaptureError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The longest file that is read, in bytes.
inline constexpr std::uintmax_t longest_capture = 256U << 20U;

/// Reads all of it or throws CaptureError.
Recording readRecording(std::istream &stream);

/// The same for a plain file, which the error names.
Recording readCapture(std::string const &path);

/// The "command" of a message; empty where there is none.
std::string commandNameIn(std::string_view text);

}  // namespace simulator

#endif
