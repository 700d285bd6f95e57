// SPDX-License-Identifier: Apache-2.0
#include "program.h"

#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

int runBenchmark(char const *program, void (*run)()) {
    try {
        run();
        return EXIT_SUCCESS;
    } catch (std::exception const &failure) {
        std::fprintf(stderr, "%s: %s\n", program, failure.what());
        return EXIT_FAILURE;
    }
}

void require(long long outcome, char const *what) {
    if (outcome != 0) {
        throw std::runtime_error(std::string(what) + " failed with " + std::to_string(outcome));
    }
}

void useOneCore() {
    cpu_set_t core;
    CPU_ZERO(&core);
    CPU_SET(0, &core);
    require(sched_setaffinity(0, sizeof core, &core), "binding to one core");
}
