// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_SOCKET_TRANSFER_H
#define KORVO_BENCH_SOCKET_TRANSFER_H

#include <string>
#include <string_view>

/// Sends all bytes; false when the other end is gone.
bool sendAll(int socket, std::string_view bytes);

/// Receives as many bytes as the text is long; false when the other end is gone.
bool receiveAll(int socket, std::string &bytes);

#endif
