// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_FILE_FAILURE_H
#define KORVO_PLATFORM_FILE_FAILURE_H

#include <stdexcept>

namespace platform {

/// A file or folder of the settings cannot be used; says which, why, and what to do. Not a std::system_error,
/// which would be taken for a failure of the messaging.
class FileFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace platform

#endif
