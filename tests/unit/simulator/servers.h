// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_SERVERS_H
#define KORVO_TESTS_UNIT_SIMULATOR_SERVERS_H

// Servers on the loopback interface for what leaves the machine.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "processes/child.h"

namespace simulator::tests {

/// One of servers.py.
class PythonServer {
  public:
    explicit PythonServer(std::vector<std::string> arguments) : child_(command(std::move(arguments))) {
        EXPECT_TRUE(child_.out().waitFor("\n")) << child_.errors().text();
        address_ = "127.0.0.1:" + child_.out().text().substr(0, child_.out().text().find('\n'));
    }
    std::string const &address() const { return address_; }

  private:
    static processes::Command command(std::vector<std::string> arguments) {
        processes::Command command;
        command.program = "/usr/bin/python3";
        command.is_of_this_machine = true;
        command.arguments = std::move(arguments);
        command.arguments.insert(command.arguments.begin(), SERVERS);
        return command;
    }
    processes::Child child_;
    std::string address_;
};

/// Takes connections and says nothing.
class SilentServer {
  public:
    SilentServer() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(::bind(socket_, reinterpret_cast<sockaddr *>(&address), size), 0);
        EXPECT_EQ(::listen(socket_, 64), 0);
        EXPECT_EQ(::getsockname(socket_, reinterpret_cast<sockaddr *>(&address), &size), 0);
        address_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    }
    ~SilentServer() { ::close(socket_); }
    SilentServer(SilentServer const &) = delete;
    SilentServer &operator=(SilentServer const &) = delete;
    std::string const &address() const { return address_; }

  private:
    int socket_;
    std::string address_;
};

}  // namespace simulator::tests

#endif
