// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PROCESSES_TEMPORARY_FOLDER_H
#define KORVO_TESTS_PROCESSES_TEMPORARY_FOLDER_H

#include <string>
#include <vector>

namespace processes {

/// A new folder that only we may enter, removed with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder const &) = delete;
    TemporaryFolder &operator=(TemporaryFolder const &) = delete;

    std::string const &path() const { return path_; }
    std::string operator/(std::string const &name) const { return path_ + "/" + name; }
    /// The names of what is in it, sorted.
    std::vector<std::string> names() const;

  private:
    std::string path_;
};

}  // namespace processes

#endif
