// SPDX-License-Identifier: Apache-2.0
#include "temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "korvo-bench.XXXXXX").string()) {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + path_);
    }
    setenv("KORVO_RUNTIME_DIR", path_.c_str(), 1);
    setenv("KORVO_STATE_DIR", path_.c_str(), 1);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}
