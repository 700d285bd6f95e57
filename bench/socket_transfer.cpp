// SPDX-License-Identifier: Apache-2.0
#include "socket_transfer.h"

#include <sys/socket.h>

bool sendAll(int socket, std::string_view bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t const count = send(socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

bool receiveAll(int socket, std::string &bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t const count = recv(socket, bytes.data() + done, bytes.size() - done, 0);
        if (count <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}
