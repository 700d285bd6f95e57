// SPDX-License-Identifier: Apache-2.0
#include "simulator/folders.h"

#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace simulator {

void makeFolder(std::string const &path) {
    // Mails and pictures are their owner's; folders that are there keep their mode.
    mode_t const previous = ::umask(077);
    std::error_code error;
    std::filesystem::create_directories(path, error);
    ::umask(previous);
    if (!error && !std::filesystem::is_directory(path, error)) {
        error =
            std::make_error_code(std::errc::not_a_directory);  // GCOV_EXCL_LINE: g++ 12 has said so before
    }
    if (error) {
        throw std::runtime_error("cannot make the folder \"" + path + "\": " + error.message() +
                                 ". Name another one.");
    }
}

}  // namespace simulator
