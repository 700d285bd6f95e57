// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PROCESSES_ENVIRONMENT_VARIABLE_H
#define KORVO_TESTS_PROCESSES_ENVIRONMENT_VARIABLE_H

#include <optional>
#include <string>

namespace processes {

/// Sets an environment variable of this process, or removes it, and puts back what was there.
class EnvironmentVariable {
  public:
    EnvironmentVariable(std::string name, std::optional<std::string> const &value);
    ~EnvironmentVariable();
    EnvironmentVariable(EnvironmentVariable const &) = delete;
    EnvironmentVariable &operator=(EnvironmentVariable const &) = delete;

  private:
    void set(std::optional<std::string> const &value);

    std::string name_;
    std::optional<std::string> before_;
};

}  // namespace processes

#endif
