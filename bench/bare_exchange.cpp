// SPDX-License-Identifier: Apache-2.0
#include "bare_exchange.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace {

bool write_all(int socket, std::string const &bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t const count = send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

bool read_all(int socket, std::string &bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t const count = recv(socket, bytes.data() + done, bytes.size() - done, 0);
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

BareExchange::BareExchange(std::string request, std::string response)
    : request_(std::move(request)), received_(response.size(), '\0') {
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0) {
        throw std::runtime_error("socketpair failed");
    }
    process_ = fork();
    if (process_ == 0) {
        close(sockets[0]);
        std::string incoming(request_.size(), '\0');
        while (read_all(sockets[1], incoming) && write_all(sockets[1], response)) {
        }
        _exit(0);
    }
    close(sockets[1]);
    socket_ = sockets[0];
    if (process_ < 0) {
        close(socket_);
        throw std::runtime_error("fork failed");
    }
}

BareExchange::~BareExchange() {
    close(socket_);
    waitpid(process_, nullptr, 0);
}

void BareExchange::call() {
    if (!write_all(socket_, request_) || !read_all(socket_, received_)) {
        throw std::runtime_error("the bare exchange broke off");
    }
}
