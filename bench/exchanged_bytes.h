// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_EXCHANGED_BYTES_H
#define KORVO_BENCH_EXCHANGED_BYTES_H

#include <string>

/// One exchange in the frames in which it travels.
struct ExchangedBytes {
    std::string request;
    std::string response;
};

/// Sends the command, JSON, to the running service and returns what travelled.
ExchangedBytes bytesOf(void *logging, std::string const &command);

#endif
