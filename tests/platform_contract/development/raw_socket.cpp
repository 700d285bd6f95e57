// SPDX-License-Identifier: Apache-2.0
#include "development/raw_socket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace {

sockaddr_un addressOf(std::string const &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

int makeSocket() {
    int const descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    timeval const patience = {20, 0};
    (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    (void)setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    return descriptor;
}

}  // namespace

RawSocket::~RawSocket() {
    if (descriptor_ >= 0) {
        (void)close(descriptor_);
    }
}

RawSocket RawSocket::connect(std::string const &path) {
    int const descriptor = makeSocket();
    sockaddr_un const address = addressOf(path);
    if (::connect(descriptor, reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0) {
        (void)close(descriptor);
        return RawSocket(-1);
    }
    return RawSocket(descriptor);
}

RawSocket RawSocket::listen(std::string const &path) {
    int const descriptor = makeSocket();
    sockaddr_un const address = addressOf(path);
    if (bind(descriptor, reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0 ||
        ::listen(descriptor, 8) != 0) {
        (void)close(descriptor);
        return RawSocket(-1);
    }
    return RawSocket(descriptor);
}

RawSocket RawSocket::accept() const {
    int const descriptor = ::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC);
    timeval const patience = {20, 0};
    (void)setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    return RawSocket(descriptor);
}

bool RawSocket::send(std::string const &bytes) const {
    return ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
}

std::string RawSocket::receive() const {
    std::array<char, 4096> buffer;
    ssize_t const count = recv(descriptor_, buffer.data(), buffer.size(), 0);
    return count > 0 ? std::string(buffer.data(), static_cast<std::size_t>(count)) : std::string();
}

bool RawSocket::comes(int limit) const {
    pollfd awaited = {descriptor_, POLLIN, 0};
    return poll(&awaited, 1, limit) == 1;
}

bool RawSocket::ends() const {
    std::array<char, 4096> buffer;
    ssize_t count = 0;
    do {
        count = recv(descriptor_, buffer.data(), buffer.size(), 0);
    } while (count > 0);
    return count == 0 || errno == ECONNRESET;
}
