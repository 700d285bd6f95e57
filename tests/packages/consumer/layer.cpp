// SPDX-License-Identifier: Apache-2.0
// Uses the C++ layer as installed: a waiting call and an asynchronous one.
#include <cstdio>

#include <korvo/action_engine.hpp>

int main() {
    try {
        korvo::ActionEngine const engine = korvo::ActionEngine::open({"layer"}).value();
        auto const version = engine.get_target_version().value();
        auto actions = engine.get_actions_future();
        std::printf("service %u.%u, actions: %zu\n", version.target_major, version.target_minor,
                    actions.get().value().size());
        return version.target_major == 1 && version.target_minor == 19 ? 0 : 1;
    } catch (korvo::Error const &error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
