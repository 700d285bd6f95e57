// SPDX-License-Identifier: Apache-2.0
// A plain stream socket: each message behind its length in one send(), read as many as come at once, and a thread of
// the service for each client.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "peers/transport.h"
#include "program.h"
#include "socket_transfer.h"

namespace {

/// Messages on a socket, one after another.
class Messages : public Connection {
  public:
    explicit Messages(int socket) : socket_(socket) {}
    ~Messages() override { close(socket_); }
    Messages(Messages const &) = delete;
    Messages &operator=(Messages const &) = delete;

    void send(std::string_view message) override {
        auto const size = static_cast<std::uint32_t>(message.size());
        out_.assign(reinterpret_cast<char const *>(&size), sizeof size).append(message);
        if (!sendAll(socket_, out_)) {
            throw std::runtime_error("the socket is closed");
        }
    }

    std::string_view receive() override {
        std::uint32_t size = 0;
        while (end_ - begin_ < sizeof size || (std::memcpy(&size, in_ + begin_, sizeof size),
                                               end_ - begin_ < sizeof size + std::size_t{size})) {
            readMore();
        }
        std::string_view const message(in_ + begin_ + sizeof size, size);
        begin_ += sizeof size + size;
        return message;
    }

  private:
    void readMore() {
        if (begin_ != 0) {
            std::memmove(in_, in_ + begin_, end_ - begin_);
            end_ -= begin_;
            begin_ = 0;
        }
        ssize_t const count = recv(socket_, in_ + end_, sizeof in_ - end_, 0);
        if (count <= 0) {
            throw std::runtime_error("the socket is closed");
        }
        end_ += static_cast<std::size_t>(count);
    }

    int socket_;
    std::string out_;
    char in_[64 * 1024];
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

int newSocket() {
    int const descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(descriptor >= 0 ? 0 : -1, "socket");
    return descriptor;
}

sockaddr_un addressOf(std::string const &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        throw std::runtime_error("too long for a socket's name: " + path);
    }
    path.copy(address.sun_path, path.size());
    return address;
}

class SocketTransport : public Transport {
  public:
    void serve(std::string const &path, std::function<void()> const &ready,
               std::function<Answer()> const &make_answer) const override {
        int const listening = newSocket();
        sockaddr_un const address = addressOf(path);
        require(bind(listening, reinterpret_cast<sockaddr const *>(&address), sizeof address), "bind");
        require(listen(listening, 16), "listen");
        ready();
        for (;;) {
            int const client = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
            require(client >= 0 ? 0 : -1, "accept");
            std::thread([client, answer = make_answer()] {
                Messages messages(client);
                try {
                    for (;;) {
                        messages.send(answer(messages.receive()));
                    }
                } catch (std::runtime_error const &) {
                    // The client has gone.
                }
            }).detach();
        }
    }

    std::unique_ptr<Connection> connect(std::string const &path) const override {
        int const descriptor = newSocket();
        sockaddr_un const address = addressOf(path);
        require(::connect(descriptor, reinterpret_cast<sockaddr const *>(&address), sizeof address),
                "connect");
        return std::make_unique<Messages>(descriptor);
    }
};

}  // namespace

std::unique_ptr<Transport> makeSocketTransport() {
    return std::make_unique<SocketTransport>();
}
