// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_REFUSED_H
#define KORVO_SIMULATOR_REFUSED_H

#include <stdexcept>
#include <string>

#include "korvo_core.h"

namespace simulator {

/// A command is answered with a status other than 0. what() says why, for the log.
class Refused : public std::runtime_error {
  public:
    Refused(korvo_core_status status, std::string const &why) : std::runtime_error(why), status_(status) {}

    korvo_core_status status() const { return status_; }

  private:
    korvo_core_status status_;
};

/// The command is not what the operation takes.
inline Refused malformed(std::string const &why) {
    return {KORVO_CORE_STATUS_INVALID_PARAMS, why};
}

/// The service has no such method.
inline Refused unsupported(std::string const &why) {
    return {KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION, why};
}

/// The command is well formed, and the service cannot do it: an unknown identifier, a kind that does not fit.
inline Refused impossible(std::string const &why) {
    return {KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE, why};
}

}  // namespace simulator

#endif
