// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_WORKSPACE_H
#define KORVO_TESTS_END_TO_END_WORKSPACE_H

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "processes/environment_variable.h"
#include "processes/temporary_folder.h"
#include "processes/text_stream.h"

namespace end_to_end {

using namespace processes;

/// What a test program has to itself: a temporary folder, with the run-time folder that KORVO_RUNTIME_DIR names in it,
/// so that programs run side by side.
class Workspace {
  public:
    static Workspace &ofThisProgram();

    std::filesystem::path folder() const { return folder_.path(); }
    std::filesystem::path runtimeFolder() const { return folder() / "run"; }

    /// A new empty folder.
    std::filesystem::path newFolder(std::string const &name);

    Workspace();
    Workspace(Workspace const &) = delete;
    Workspace &operator=(Workspace const &) = delete;

  private:
    TemporaryFolder folder_;
    unsigned int folders_ = 0;
};

/// What this process writes to standard error, which is where the log goes. Kept instead of shown, and shown when a
/// test has failed. Reports of a sanitizer are shown at once.
class ErrorOutput {
  public:
    static ErrorOutput &ofThisProgram();

    /// Where the output is now, for since() and waitFor().
    std::size_t mark();
    /// Everything written from the mark until now.
    std::string since(std::size_t mark);
    bool waitFor(std::string_view wanted, std::size_t mark, milliseconds limit = patience) const;

    ErrorOutput();
    ~ErrorOutput();
    ErrorOutput(ErrorOutput const &) = delete;
    ErrorOutput &operator=(ErrorOutput const &) = delete;

  private:
    /// Returns when all that this process has written so far has been read.
    void settle();

    Descriptor original_;
    std::unique_ptr<TextStream> stream_;
    unsigned int marks_ = 0;
};

}  // namespace end_to_end

#endif
