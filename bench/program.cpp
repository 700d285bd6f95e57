// SPDX-License-Identifier: Apache-2.0
#include "program.h"

#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

int runBenchmark(int argc, char **argv, void (*run)(Run &)) {
    bool is_short = false;
    std::string results_file;
    for (int position = 1; position < argc; ++position) {
        std::string_view const word = argv[position];
        if (word == "--short") {
            is_short = true;
        } else if (word == "--results" && position + 1 < argc) {
            results_file = argv[++position];
        } else {
            std::fprintf(stderr, "usage: %s [--short] [--results FILE]\n", argv[0]);
            return 2;
        }
    }
    try {
        // Lines of a child that ends early must not be printed by both.
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
        Run this_run(is_short, results_file);
        run(this_run);
        return EXIT_SUCCESS;
    } catch (std::exception const &failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
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
