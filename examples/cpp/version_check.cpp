// SPDX-License-Identifier: Apache-2.0
// Compares the interface versions of library and service, and does its own work while it waits for the answer.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <korvo/action_engine.hpp>

int main() {
    try {
        korvo::ActionEngine const engine = korvo::ActionEngine::open({"version_check"}).value();
        auto answer = engine.get_target_version_future();
        while (answer.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready) {
            // Here the program does its own work.
        }
        korvo::TargetVersion const service = answer.get().value();
        korvo::InitiatorVersion const own = engine.get_initiator_version();
        std::printf("This client speaks version %u.%u, the service %u.%u\n", own.initiator_major,
                    own.initiator_minor, service.target_major, service.target_minor);
        return EXIT_SUCCESS;
    } catch (std::exception const &error) {
        std::fprintf(stderr, "version_check: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
