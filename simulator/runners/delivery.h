// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_DELIVERY_H
#define KORVO_SIMULATOR_RUNNERS_DELIVERY_H

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/engine.h"

namespace simulator::runners {

// What leaves the machine, and where it goes. What an action says is checked here, whether it is sent or only recorded: no
// text of it can add a header, a recipient, or a command to a server.

/// A name or an address, and behind a colon a port.
struct Server {
    /// host or host:port, as a URL has it.
    std::string address;
    /// In small letters, without the port.
    std::string host;
};

/// Throws std::runtime_error for what is no host, or no port.
Server readServer(std::string const &text);

/// a@example.org of "a@example.org", or of "Anna <a@example.org>". Throws std::runtime_error for anything else.
std::string readMailAddress(std::string const &text);

struct Delivery {
    enum class Kind { mail, upload };
    Kind kind;
    Server server;
    /// Where an upload goes, and with which login; of mails the login where there is one.
    std::string url;
    std::string username;
    std::string password;
    /// Of mails. Without a sender they come from nobody.
    std::string sender;
    std::vector<std::string> recipients;
    std::string contents;
};

/// The mail that an e-mail action stands for, without a login. Throws std::runtime_error when it cannot be sent.
Delivery mailOf(Job const &job, std::string_view picture, std::time_t date);

/// The upload that an FTP action stands for. A path that begins with "/" is the server's, another one is within the folder
/// into which the login leads. Throws std::runtime_error when it cannot be sent.
Delivery uploadOf(Job const &job, std::string picture);

}  // namespace simulator::runners

#endif
