// SPDX-License-Identifier: Apache-2.0
#include "frame/entropy.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

/// Calls `read` for what is still missing until nothing is. Returns false, with errno, when it fails.
template <typename Read>
bool fill(unsigned char *&bytes, std::size_t &count, Read read) {
    while (count > 0) {
        ssize_t const got = read(bytes, count);
        if (got > 0) {
            bytes += got;
            count -= static_cast<std::size_t>(got);
        } else if (got == 0) {
            // No source of the kernel's ends. GCOV_EXCL_START
            errno = EIO;
            return false;
            // GCOV_EXCL_STOP
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool fillFromDevice(unsigned char *bytes, std::size_t count) {
    int const device = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (device < 0) {
        return false;
    }
    bool const filled =
        fill(bytes, count, [=](void *place, std::size_t size) { return read(device, place, size); });
    int const reason = errno;
    (void)close(device);
    errno = reason;
    return filled;
}

}  // namespace

void fillWithEntropy(void *bytes, std::size_t count) {
    auto *place = static_cast<unsigned char *>(bytes);
    bool filled =
        fill(place, count, [](void *missing, std::size_t size) { return getrandom(missing, size, 0); });
    if (!filled && errno == ENOSYS) {
        // Kernels before 3.17 have the device alone.
        filled = fillFromDevice(place, count);
    }
    if (!filled) {
        throw std::system_error(errno, std::generic_category(), "no entropy");
    }
}
