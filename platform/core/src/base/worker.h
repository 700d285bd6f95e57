// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_WORKER_H
#define KORVO_PLATFORM_WORKER_H

#include <functional>
#include <thread>

namespace platform {

/// Starts a thread that receives no signals: a process's handlers run on threads that it knows of. `name` is
/// what tools show, at most 15 characters. Throws std::system_error.
std::thread startWorker(char const *name, std::function<void()> work);

}  // namespace platform

#endif
