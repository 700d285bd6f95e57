// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_RUNTIME_FOLDER_H
#define KORVO_TESTS_PLATFORM_RUNTIME_FOLDER_H

#include <optional>
#include <string>

/// A new folder for the sockets of one test, named in KORVO_RUNTIME_DIR while it lives and removed
/// afterwards.
class TestRuntimeFolder {
  public:
    TestRuntimeFolder();
    ~TestRuntimeFolder();

    TestRuntimeFolder(TestRuntimeFolder const &) = delete;
    TestRuntimeFolder &operator=(TestRuntimeFolder const &) = delete;

    std::string const &path() const { return path_; }

  private:
    std::string path_;
    std::optional<std::string> before_;
};

#endif
