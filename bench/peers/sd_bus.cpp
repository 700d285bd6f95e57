// SPDX-License-Identifier: Apache-2.0
#include "peers/sd_bus.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace sdbus {

Bus::Bus(std::string const &path) {
    checked(sd_bus_new(&bus_), "new");
    checked(sd_bus_set_address(bus_, ("unix:path=" + path).c_str()), "address");
    checked(sd_bus_start(bus_), "start");
}

Bus::Bus(int socket) {
    sd_id128_t id{};
    checked(sd_id128_randomize(&id), "identifier");
    checked(sd_bus_new(&bus_), "new");
    checked(sd_bus_set_fd(bus_, socket, socket), "socket");
    checked(sd_bus_set_server(bus_, 1, id), "server");
    checked(sd_bus_start(bus_), "start");
}

Listening::Listening(std::string const &path) : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    require(socket_ >= 0 ? 0 : -1, "socket");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    require(bind(socket_, reinterpret_cast<sockaddr const *>(&address), sizeof address), "bind");
    require(listen(socket_, 16), "listen");
}

Listening::~Listening() {
    close(socket_);
}

Bus Listening::accept() const {
    int const client = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    require(client >= 0 ? 0 : -1, "accept");
    return Bus(client);
}

}  // namespace sdbus
