// SPDX-License-Identifier: Apache-2.0
#include "processes/environment_variable.h"

#include <stdlib.h>

#include <utility>

namespace processes {

EnvironmentVariable::EnvironmentVariable(std::string name, std::optional<std::string> const &value)
    : name_(std::move(name)) {
    if (char const *const before = getenv(name_.c_str())) {
        before_ = before;
    }
    set(value);
}

EnvironmentVariable::~EnvironmentVariable() {
    set(before_);
}

void EnvironmentVariable::set(std::optional<std::string> const &value) {
    (void)(value ? setenv(name_.c_str(), value->c_str(), 1) : unsetenv(name_.c_str()));
}

}  // namespace processes
