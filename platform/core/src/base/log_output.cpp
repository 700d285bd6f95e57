// SPDX-License-Identifier: Apache-2.0
#include "base/log_output.h"

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

#include "base/log_record.h"

namespace platform::log_output {

namespace {

std::atomic<unsigned long long> lost{0};
/// The last record that was written has no end.
std::atomic<bool> is_cut{false};

/// Writes with `write_some` until all is written or nothing more is taken; gives how much was.
template <typename WriteSome>
std::size_t writeAll(std::string_view bytes, WriteSome write_some) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        ssize_t const count = write_some(bytes.substr(written));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    return written;
}

/// A write() that fails where the reader of a pipe is gone, and raises no signal, which would end the program.
ssize_t writeWithoutSignal(int file, std::string_view bytes) {
    sigset_t broken_pipe;
    sigset_t before;
    sigset_t pending;
    (void)sigemptyset(&broken_pipe);
    (void)sigaddset(&broken_pipe, SIGPIPE);
    (void)sigpending(&pending);
    bool const was_pending = sigismember(&pending, SIGPIPE) == 1;
    (void)pthread_sigmask(SIG_BLOCK, &broken_pipe, &before);
    ssize_t const count = ::write(file, bytes.data(), bytes.size());
    int const failure = errno;
    if (count < 0 && failure == EPIPE && !was_pending) {
        timespec const at_once = {};
        while (sigtimedwait(&broken_pipe, nullptr, &at_once) < 0 && errno == EINTR) {
        }
    }
    (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = failure;
    return count;
}

/// For files that cannot be opened anew: no more at a time than a pipe takes whole when it takes anything.
ssize_t writeWhenReady(std::string_view bytes) {
    pollfd watched = {STDERR_FILENO, POLLOUT, 0};
    if (poll(&watched, 1, 0) <= 0) {
        return -1;
    }
    return writeWithoutSignal(STDERR_FILENO, bytes.substr(0, PIPE_BUF));
}

std::size_t writeNow(std::string_view bytes) {
    struct stat file = {};
    if (fstat(STDERR_FILENO, &file) != 0) {
        return 0;
    }
    if (S_ISREG(file.st_mode)) {
        return writeAll(
            bytes, [](std::string_view rest) { return ::write(STDERR_FILENO, rest.data(), rest.size()); });
    }
    if (S_ISSOCK(file.st_mode)) {
        return writeAll(bytes, [](std::string_view rest) {
            return send(STDERR_FILENO, rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        });
    }
    // Opened anew, since not to wait is a property that all who share standard error would get with us.
    int const own = open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (own < 0) {
        return writeAll(bytes, writeWhenReady);
    }
    std::size_t const written =
        writeAll(bytes, [own](std::string_view rest) { return writeWithoutSignal(own, rest); });
    ::close(own);
    return written;
}

bool tell(std::string_view name, unsigned long long count) {
    std::string const line =
        std::string(is_cut ? "\n" : "") + log_record::line(KORVO_CORE_LOG_PRIORITY_WARNING, name,
                                                           std::to_string(count) +
                                                               " records before this one were lost or "
                                                               "cut: nobody read what was written");
    return writeNow(line) == line.size();
}

}  // namespace

void write(std::string_view name, std::string_view record) {
    unsigned long long const untold = lost.exchange(0);
    if (untold != 0) {
        bool is_told = false;
        try {
            is_told = tell(name, untold);
        } catch (...) {
            lost += untold;
            throw;
        }
        if (!is_told) {
            lost += untold + 1;
            return;
        }
        is_cut = false;
    }
    std::size_t const written = writeNow(record);
    if (written != record.size()) {
        ++lost;
        is_cut = is_cut || written != 0;
    }
}

}  // namespace platform::log_output
