// SPDX-License-Identifier: Apache-2.0
// Lists the actions without waiting in the call: the answer comes to a callable on a thread of the engine's.
#include <cstdio>
#include <cstdlib>
#include <future>
#include <korvo/action_engine.hpp>
#include <vector>

int main() {
    try {
        korvo::ActionEngine const engine = korvo::ActionEngine::open({"asynchronous_list"}).value();
        // Every call ends once, at its time-out at the latest, so that nobody waits for ever.
        std::promise<int> exit_code;
        korvo::PendingCall const call =
            engine.get_actions_async([&](korvo::Result<std::vector<korvo::ActionEntry>> const &result) {
                if (!result) {
                    std::fprintf(stderr, "asynchronous_list: %s\n", result.message().c_str());
                    exit_code.set_value(EXIT_FAILURE);
                    return;
                }
                for (korvo::ActionEntry const &action : result.value()) {
                    std::printf("action %u of type %u\n", korvo::number(action.action_id),
                                action.action_type);
                }
                std::printf("%zu actions\n", result.value().size());
                exit_code.set_value(EXIT_SUCCESS);
            });
        return exit_code.get_future().get();
    } catch (std::exception const &error) {
        std::fprintf(stderr, "asynchronous_list: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
