// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_TEMPORARY_FOLDER_H
#define KORVO_BENCH_TEMPORARY_FOLDER_H

#include <string>

/// A new folder, as long as the object lives, in which this process and those that it starts meet and keep their
/// state: sets KORVO_RUNTIME_DIR and KORVO_STATE_DIR.
class TemporaryFolder {
  public:
    /// Throws std::runtime_error.
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(TemporaryFolder const &) = delete;
    TemporaryFolder &operator=(TemporaryFolder const &) = delete;

    std::string const &path() const { return path_; }

  private:
    std::string path_;
};

#endif
