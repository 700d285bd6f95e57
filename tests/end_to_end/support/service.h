// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_SERVICE_H
#define KORVO_TESTS_END_TO_END_SERVICE_H

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "processes/child.h"

namespace end_to_end {

using namespace processes;

/// The action engine service as a process of its own, in the run-time folder of this test program and with a state
/// folder to itself.
class Service {
  public:
    /// Starts it, and returns when clients can call.
    explicit Service(std::vector<std::string> options = {});
    /// Stops it if it runs; the test fails if it does not end well.
    ~Service();

    Service(Service const &) = delete;
    Service &operator=(Service const &) = delete;

    /// Again after stop() or kill(), with the same options and folders.
    void start();
    /// SIGTERM; the test fails unless the service ends with code 0 soon.
    void stop();
    /// SIGKILL; returns when the process is gone.
    void kill();
    /// SIGSTOP and SIGCONT.
    void pause();
    void resume();

    bool running() const { return child_ != nullptr && child_->running(); }
    pid_t pid() const { return child_->pid(); }
    std::filesystem::path const &snapshots() const { return snapshots_; }
    std::filesystem::path const &outbox() const { return outbox_; }

    /// What the service has logged since it was started last.
    std::string log() const { return child_->errors().text(); }
    std::size_t logSize() const { return child_->errors().size(); }
    bool waitForLog(std::string_view wanted, std::size_t from = 0) const {
        return child_->errors().waitFor(wanted, from);
    }

    /// The socket of the one that runs.
    static std::string socketPath();

    /// How to run the program with these options and nothing else.
    static Command command(std::vector<std::string> options);

  private:
    std::vector<std::string> options_;
    std::filesystem::path state_;
    std::filesystem::path snapshots_;
    std::filesystem::path outbox_;
    std::unique_ptr<Child> child_;
};

}  // namespace end_to_end

#endif
