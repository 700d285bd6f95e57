// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CAPTURES_CAPTURE_H
#define KORVO_SIMULATOR_CAPTURES_CAPTURE_H

#include <cstdint>
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
    /// As the file has them.
    static constexpr char const *to_service_text = "to service";
    static constexpr char const *from_service_text = "from service";
    enum class Secrets { hidden, shown };

    /// What becomes of a file that exists.
    enum class Existing { added_to, refused };

    /// The file is made readable by its owner only where it is new. Throws std::runtime_error.
    Capture(std::string const &path, Secrets secrets, Existing existing, Log const &log);
    ~Capture();
    Capture(Capture const &) = delete;
    Capture &operator=(Capture const &) = delete;

    /// A message on its way. An event has neither peer nor request.
    struct Message {
        std::string_view peer;
        std::string_view request;
        Direction direction;
        std::string_view text;
    };

    /// What cannot be written is left out, which the log tells the first time.
    void note(Wall time, Message const &message) noexcept;

    /// So many messages were written.
    std::uint32_t count();

    /// The line of one message, with its end. With hidden secrets passwords are null, and so is a text that is no JSON and
    /// may hold one.
    static std::string line(Wall time, Message const &message, Secrets secrets);

  private:
    Secrets secrets_;
    Log const &log_;
    int file_;
    struct Written {
        std::uint32_t count = 0;
        bool all = true;
    };
    Guarded<Written> written_;
};

}  // namespace simulator

#endif
