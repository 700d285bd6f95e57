// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_RUNTIME_FOLDER_H
#define KORVO_TESTS_PLATFORM_RUNTIME_FOLDER_H

#include <string>

#include "processes/environment_variable.h"
#include "processes/temporary_folder.h"

/// A new folder for the sockets of one test, named in KORVO_RUNTIME_DIR while it lives and removed
/// afterwards.
class TestRuntimeFolder {
  public:
    TestRuntimeFolder();

    std::string const &path() const { return folder_.path(); }

  private:
    processes::TemporaryFolder folder_;
    processes::EnvironmentVariable variable_;
};

#endif
