// SPDX-License-Identifier: Apache-2.0
#include "support/runtime_folder.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

TestRuntimeFolder::TestRuntimeFolder() {
    if (char const *const before = getenv("KORVO_RUNTIME_DIR")) {
        before_ = before;
    }
    std::string name = (std::filesystem::temp_directory_path() / "korvo-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr || setenv("KORVO_RUNTIME_DIR", name.c_str(), 1) != 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    path_ = name;
}

TestRuntimeFolder::~TestRuntimeFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    (void)(before_ ? setenv("KORVO_RUNTIME_DIR", before_->c_str(), 1) : unsetenv("KORVO_RUNTIME_DIR"));
}
