// SPDX-License-Identifier: Apache-2.0
#include "tool/whole_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "tool/failure.h"

namespace tool {
namespace {

/// Readable by others as far as the user lets it.
mode_t usualMode() {
    mode_t const mask = ::umask(0);
    (void)::umask(mask);
    return 0666U & ~mask;
}

}  // namespace

int writeAll(int descriptor, std::string const &text) {
    for (std::size_t place = 0; place < text.size();) {
        auto const written = ::write(descriptor, text.data() + place, text.size() - place);
        if (written >= 0) {
            place += static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void writeWhole(std::string const &parameter, std::string const &file, std::string const &text) {
    auto const fail = [&](Exit code, std::string const &why, char const *advice) {
        throw Failure(code, parameter + ": cannot write \"" + file + "\": " + why, advice);
    };
    // A link stays one.
    std::error_code ignored;
    std::filesystem::path const real = std::filesystem::canonical(file, ignored);
    std::string const target = real.empty() ? file : real.string();
    struct stat found = {};
    bool const exists = ::stat(target.c_str(), &found) == 0;
    if (exists && !S_ISREG(found.st_mode)) {
        fail(Exit::usage, "it is no file", "name a file");
    }
    std::string temporary = target + ".XXXXXX";
    int const descriptor = ::mkstemp(temporary.data());
    if (descriptor < 0) {
        fail(Exit::usage, std::strerror(errno), "name a file in a folder that can be written to");
    }
    int problem = writeAll(descriptor, text);
    if (problem == 0 && ::fsync(descriptor) != 0) {
        problem = errno;
    }
    if (problem == 0 && ::fchmod(descriptor, exists ? found.st_mode & 07777U : usualMode()) != 0) {
        problem = errno;
    }
    (void)::close(descriptor);
    if (problem == 0 && std::rename(temporary.c_str(), target.c_str()) != 0) {
        problem = errno;
    }
    if (problem != 0) {
        (void)::unlink(temporary.c_str());
        fail(Exit::other, std::strerror(problem), "make room, or name another file");
    }
}

}  // namespace tool
