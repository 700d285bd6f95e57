// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_LOGINS_H
#define KORVO_SIMULATOR_RUNNERS_LOGINS_H

#include <map>
#include <string>

namespace simulator::runners {

struct Login {
    std::string username;
    std::string password;
};

/// By the server's host, in small letters.
using Logins = std::map<std::string, Login>;

/// Reads a file with one line a server, as programs know it from .netrc: machine HOST login USER password PASSWORD. Lines that
/// are empty or begin with # are passed over. Throws std::runtime_error for a file that cannot be read or is not understood,
/// and for one that others than its owner can read.
Logins readLogins(std::string const &path);

}  // namespace simulator::runners

#endif
