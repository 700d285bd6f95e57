// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_SERVICE_PROCESS_H
#define KORVO_BENCH_SERVICE_PROCESS_H

#include <sys/types.h>

#include <string>
#include <vector>

#include "temporary_folder.h"

/// The service in a process and folder of its own, as long as the object lives.
class ServiceProcess {
  public:
    /// Returns once the service takes commands; throws std::runtime_error when it does not start.
    explicit ServiceProcess(std::string const &program, std::vector<std::string> const &arguments = {});
    ~ServiceProcess();

    ServiceProcess(ServiceProcess const &) = delete;
    ServiceProcess &operator=(ServiceProcess const &) = delete;

    pid_t process() const { return process_; }

  private:
    TemporaryFolder const folder_;
    int output_ = -1;
    pid_t process_ = -1;
};

#endif
