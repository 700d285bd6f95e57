// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <stdexcept>

#include "tool/operations.h"

namespace tool {

std::string withHyphens(std::string name) {
    std::replace(name.begin(), name.end(), '_', '-');
    return name;
}

Operation const *findOperation(std::string const &name) {
    for (Operation const &row : operations()) {
        if (name == row.name || name == row.method || name == withHyphens(row.name)) {
            return &row;
        }
    }
    return nullptr;
}

Operation const &operation(std::string const &name) {
    Operation const *const found = findOperation(name);
    if (found == nullptr) {
        throw std::logic_error("no operation is called " + name);
    }
    return *found;
}

}  // namespace tool
