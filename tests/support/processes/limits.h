// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PROCESSES_LIMITS_H
#define KORVO_TESTS_PROCESSES_LIMITS_H

#include <chrono>
#include <thread>

namespace processes {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

/// How long a test waits for what must happen. Reaching it is a failure, so it is far above what is ever needed.
constexpr milliseconds patience{30'000};

/// What "at once" may take: nothing is waited for, but a machine that tests share is not always quick.
constexpr milliseconds at_once{sanitized ? 3'000 : 1'000};

/// What closing a handle may take.
constexpr milliseconds closing{sanitized ? 500 : 100};

/// Given to calls that must end long before it.
constexpr int long_timeout_ms = 25'000;

/// How long `work` takes.
template <typename Work>
milliseconds timeOf(Work const &work) {
    auto const start = Clock::now();
    work();
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

/// Asks every millisecond, for at most so long. Returns what `condition` gave last.
template <typename Condition>
bool becomesTrue(Condition const &condition, milliseconds limit = patience) {
    auto const end = Clock::now() + limit;
    bool is_true = condition();
    while (!is_true && Clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(1));
        is_true = condition();
    }
    return is_true;
}

}  // namespace processes

#endif
