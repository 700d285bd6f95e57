// SPDX-License-Identifier: Apache-2.0
// Stays: prints what actions complete and, again and again, how many actions there are, until SIGTERM or SIGINT. Ends at
// once, also while a call waits for a service that does not answer.
//
//     watch_daemon [SECONDS]        between two questions (10 if not given)
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <korvo/action_engine.hpp>

namespace {

void tell(korvo::Result<korvo::ActionCounts> const &answer) {
    if (answer) {
        std::printf("%u actions\n", answer.value().total);
    } else {
        // The service may come back: it is asked again.
        std::printf("no answer: %s\n", answer.message().c_str());
    }
    (void)std::fflush(stdout);
}

/// Returns the signal that ends it. The engine ends with this function: no callable runs afterwards.
int watch(sigset_t const &signals, timespec const &pause) {
    korvo::ActionEngine const engine = korvo::ActionEngine::open({"watch_daemon"}).value();
    korvo::Subscription const events =
        engine
            .on_action_completed([](korvo::ActionCompleted const &event) {
                std::printf("action %u \"%s\" %s\n", korvo::number(event.action_id),
                            event.action_name.c_str(), event.success ? "succeeded" : "failed");
                (void)std::fflush(stdout);
            })
            .value();
    int signal_number = 0;
    do {
        engine.get_action_counts_async(tell).detach();
        signal_number = sigtimedwait(&signals, nullptr, &pause);
    } while (signal_number < 0);
    return signal_number;
}

}  // namespace

int main(int argc, char **argv) {
    try {
        // Before any thread starts, so that every one inherits it and the signals wait for sigtimedwait().
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGTERM);
        sigaddset(&signals, SIGINT);
        (void)pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        timespec pause = {};
        pause.tv_sec = argc > 1 ? static_cast<time_t>(std::strtoul(argv[1], nullptr, 10)) : 10;
        std::printf("stopped by signal %d\n", watch(signals, pause));
        return EXIT_SUCCESS;
    } catch (std::exception const &error) {
        std::fprintf(stderr, "watch_daemon: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
