// SPDX-License-Identifier: Apache-2.0
#include "support/system_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>

#include "live_blocks/live_blocks.h"

namespace torture {

namespace {

std::atomic<bool> is_armed{false};
std::atomic<std::size_t> left{0};
std::atomic<bool> has_failed{false};
std::atomic<std::size_t> waits_made{0};
char const *function_that_fails = "";
int error_of_it = 0;

bool isTheOne(char const *function) {
    if (!is_armed.load(std::memory_order_acquire) || !live_blocks::isRecorded() ||
        std::string_view(function) != function_that_fails || left.fetch_sub(1) != 1) {
        return false;
    }
    has_failed = true;
    return true;
}

void noteWait() {
    waits_made += live_blocks::isRecorded() ? 1U : 0U;
}

#if __WORDSIZE == 64
/// The mode of a file that open() may make.
mode_t modeOf(int flags, va_list more) {
    return (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
}
#endif

/// The C library's own function.
template <typename Function>
Function *next(char const *name, Function *) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

template <typename Call>
auto callOrFail(char const *function, Call const &call) {
    if (isTheOne(function)) {
        errno = error_of_it;
        return decltype(call()){-1};
    }
    return call();
}

/// Of those that read or write bytes.
template <typename Call>
ssize_t callOrFail(char const *function, std::size_t size, Call const &call) {
    if (!isTheOne(function)) {
        return call(size);
    }
    if (error_of_it == one_byte) {
        return call(std::min<std::size_t>(size, 1));
    }
    errno = error_of_it;
    return -1;
}

}  // namespace

FailingCall::FailingCall(char const *function, int error, std::size_t nth) : error_(error) {
    function_that_fails = function;
    error_of_it = error;
    left = nth;
    has_failed = false;
    live_blocks::refuseThreads([] { return isTheOne("pthread_create"); });
    is_armed.store(true, std::memory_order_release);
}

void FailingCall::stop() {
    is_armed = false;
}

bool FailingCall::hasFailed() const {
    return torture::has_failed;
}

std::size_t FailingCall::waits() {
    return waits_made;
}

}  // namespace torture

#define REPLACE(name, parameters, ...)                                                              \
    __attribute__((visibility("default"))) int name parameters noexcept {                           \
        static auto *const original = torture::next(#name, static_cast<decltype(name) *>(nullptr)); \
        return torture::callOrFail(#name, [&] { return original(__VA_ARGS__); });                   \
    }

#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

REPLACE(socket, (int domain, int type, int protocol), domain, type, protocol)
REPLACE(epoll_create1, (int flags), flags)
REPLACE(epoll_ctl, (int set, int operation, int descriptor, epoll_event *event), set, operation, descriptor,
        event)
REPLACE(eventfd, (unsigned int value, int flags), value, flags)
REPLACE(inotify_init1, (int flags), flags)
REPLACE(inotify_add_watch, (int set, char const *path, std::uint32_t mask), set, path, mask)
#if __WORDSIZE == 64  // Elsewhere these names stand for other functions, by the width of times.
REPLACE(getsockopt, (int descriptor, int level, int option, void *value, socklen_t *size), descriptor, level,
        option, value, size)
REPLACE(setsockopt, (int descriptor, int level, int option, void const *value, socklen_t size), descriptor,
        level, option, value, size)
REPLACE(fstat, (int descriptor, struct stat *found), descriptor, found)
REPLACE(stat, (char const *path, struct stat *found), path, found)
REPLACE(fstatat, (int folder, char const *name, struct stat *found, int flags), folder, name, found, flags)
#endif
REPLACE(bind, (int descriptor, sockaddr const *address, socklen_t size), descriptor, address, size)
REPLACE(listen, (int descriptor, int most), descriptor, most)
REPLACE(shutdown, (int descriptor, int how), descriptor, how)
REPLACE(mkdir, (char const *path, mode_t mode), path, mode)
REPLACE(flock, (int descriptor, int operation), descriptor, operation)
REPLACE(renameat, (int from, char const *name, int to, char const *new_name), from, name, to, new_name)
REPLACE(unlinkat, (int folder, char const *name, int flags), folder, name, flags)
#undef REPLACE

// These may be cancelled, and so are not declared as never throwing.

__attribute__((visibility("default"))) int connect(int descriptor, sockaddr const *address, socklen_t size) {
    static auto *const original = torture::next("connect", &connect);
    return torture::callOrFail("connect", [&] { return original(descriptor, address, size); });
}

__attribute__((visibility("default"))) int accept4(int descriptor, sockaddr *address, socklen_t *size,
                                                   int flags) {
    static auto *const original = torture::next("accept4", &accept4);
    return torture::callOrFail("accept4", [&] { return original(descriptor, address, size, flags); });
}

#if __WORDSIZE == 64
__attribute__((visibility("default"))) int open(char const *path, int flags, ...) {
    static auto *const original = torture::next("open", &open);
    va_list more;
    va_start(more, flags);
    mode_t const mode = torture::modeOf(flags, more);
    va_end(more);
    return torture::callOrFail("open", [&] { return original(path, flags, mode); });
}

__attribute__((visibility("default"))) int openat(int folder, char const *path, int flags, ...) {
    static auto *const original = torture::next("openat", &openat);
    va_list more;
    va_start(more, flags);
    mode_t const mode = torture::modeOf(flags, more);
    va_end(more);
    return torture::callOrFail("openat", [&] { return original(folder, path, flags, mode); });
}
#endif

__attribute__((visibility("default"))) int poll(pollfd *descriptors, nfds_t count, int timeout) {
    static auto *const original = torture::next("poll", &poll);
    return torture::callOrFail("poll", [&] { return original(descriptors, count, timeout); });
}

__attribute__((visibility("default"))) int epoll_wait(int set, epoll_event *events, int most, int timeout) {
    static auto *const original = torture::next("epoll_wait", &epoll_wait);
    torture::noteWait();
    return torture::callOrFail("epoll_wait", [&] { return original(set, events, most, timeout); });
}

__attribute__((visibility("default"))) ssize_t send(int descriptor, void const *bytes, size_t size,
                                                    int flags) {
    static auto *const original = torture::next("send", &send);
    return torture::callOrFail("send", size,
                               [&](size_t part) { return original(descriptor, bytes, part, flags); });
}

__attribute__((visibility("default"))) ssize_t recv(int descriptor, void *bytes, size_t size, int flags) {
    static auto *const original = torture::next("recv", &recv);
    return torture::callOrFail("recv", size,
                               [&](size_t part) { return original(descriptor, bytes, part, flags); });
}

__attribute__((visibility("default"))) ssize_t read(int descriptor, void *bytes, size_t size) {
    static auto *const original = torture::next("read", &read);
    return torture::callOrFail("read", size, [&](size_t part) { return original(descriptor, bytes, part); });
}

__attribute__((visibility("default"))) ssize_t write(int descriptor, void const *bytes, size_t size) {
    static auto *const original = torture::next("write", &write);
    return torture::callOrFail("write", size, [&](size_t part) { return original(descriptor, bytes, part); });
}

__attribute__((visibility("default"))) int fsync(int descriptor) {
    static auto *const original = torture::next("fsync", &fsync);
    return torture::callOrFail("fsync", [&] { return original(descriptor); });
}

}  // extern "C"
