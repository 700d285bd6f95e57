// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/logins.h"

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "simulator/log.h"
#include "simulator/runners/delivery.h"

namespace simulator::runners {

Logins readLogins(std::string const &path) {
    struct stat status {};
    std::ifstream file(path);
    if (!file || ::stat(path.c_str(), &status) != 0) {
        throw std::runtime_error("cannot read the logins in " + quoted(path) + ": " +
                                 std::generic_category().message(errno));
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw std::runtime_error("others can read the logins in " + quoted(path) + "; chmod 600 it first");
    }
    Logins logins;
    std::string line;
    for (unsigned int number = 1; std::getline(file, line); ++number) {
        std::istringstream words(line);
        std::string machine;
        std::string host;
        std::string login;
        std::string password;
        Login read;
        std::string rest;
        if (!(words >> machine) || machine.front() == '#') {
            continue;
        }
        words >> host >> login >> read.username >> password >> read.password;
        if (!words || words >> rest || machine != "machine" || login != "login" || password != "password") {
            throw std::runtime_error(quoted(path) + ", line " + std::to_string(number) +
                                     ": it must be like machine mail.example.org login anna password secret");
        }
        logins[readServer(host).host] = std::move(read);
    }
    return logins;
}

}  // namespace simulator::runners
