// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_FAILING_SERVICE_H
#define KORVO_TESTS_TORTURE_FAILING_SERVICE_H

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "platform_contract/development/raw_socket.h"
#include "processes/temporary_folder.h"

namespace torture {

/// The service as a process of its own, whose allocations fail as those of live_blocks::FailingAllocations do. One at a time.
class FailingService {
  public:
    enum class Since {
        start,
        /// Since begin().
        begin
    };
    FailingService(Since since, std::size_t nth, std::size_t count);
    ~FailingService();
    FailingService(FailingService const &) = delete;
    FailingService &operator=(FailingService const &) = delete;

    /// Waits until it is ready; false when it has ended instead.
    bool isReady();
    void begin();
    /// From the next failure on none fails any more.
    void relent();
    std::size_t failed() const;

    /// Tells it to end, waits until it has, and gives the status of its exit.
    int stop();
    /// The same where it ends by itself.
    int wait();
    /// What it wrote to standard error, once it has ended.
    std::string const &said() const { return said_; }

  private:
    struct Told;
    /// One end of a pipe is the service's.
    class Pipe {
      public:
        Pipe();
        ~Pipe();
        Pipe(Pipe const &) = delete;
        Pipe &operator=(Pipe const &) = delete;

        int end() const { return ends_[1]; }
        void closeEnd();
        /// Reads on until this text has come, or all has; false then.
        bool readUntil(std::string const &wanted, std::string &text) const;

      private:
        std::array<int, 2> ends_{-1, -1};
    };

    [[noreturn]] void serve(Since since, std::size_t nth, std::size_t count);

    processes::TemporaryFolder folder_;
    Told *told_;
    Pipe out_;
    Pipe errors_;
    std::string printed_;
    std::string said_;
    pid_t child_;
};

/// One who asks a FailingService.
class Caller {
  public:
    enum class Of { service, control };
    explicit Caller(Of of);

    /// Has events sent, and never reads one.
    void subscribe() const;
    /// The answer, or nothing where the connection ends. It is a failure when neither comes. While memory fails without end
    /// a service may be unable to read; with `failing_service` that ends when nothing comes for a moment.
    std::optional<std::string> ask(std::string const &command,
                                   FailingService *failing_service = nullptr) const;

  private:
    RawSocket socket_;
};

}  // namespace torture

#endif
