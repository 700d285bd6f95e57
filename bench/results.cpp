// SPDX-License-Identifier: Apache-2.0
#include "results.h"

#include <stdexcept>

Results::Results(std::string const &file) {
    if (!file.empty()) {
        file_ = std::fopen(file.c_str(), "ae");
        if (file_ == nullptr) {
            throw std::runtime_error("cannot write " + file);
        }
        // Processes that are forked off must find nothing to write once more.
        std::setvbuf(file_, nullptr, _IOLBF, 0);
    }
}

Results::~Results() {
    if (file_ != nullptr) {
        (void)std::fclose(file_);
    }
}

void Results::compared(std::string const &figure, std::vector<Outcome> const &outcomes) {
    std::printf("\n%-38s %26s %9s %10s %26s %26s\n", figure.c_str(), "microseconds (quartiles)", "own CPU",
                "peers' CPU", "ratio (quartiles)", "CPU ratio (quartiles)");
    for (Outcome const &outcome : outcomes) {
        std::printf("    %-34s %8.2f (%7.2f %7.2f) %9.2f %10.2f %8.3f (%7.3f %7.3f) %8.3f (%7.3f %7.3f)\n",
                    outcome.name.c_str(), outcome.elapsed.median, outcome.elapsed.low, outcome.elapsed.high,
                    outcome.own.median, outcome.peers.median, outcome.ratio.median, outcome.ratio.low,
                    outcome.ratio.high, outcome.processor_ratio.median, outcome.processor_ratio.low,
                    outcome.processor_ratio.high);
        write("side", figure, outcome.name, "", "us", outcome.elapsed, &outcome);
    }
}

void Results::value(std::string const &figure, std::string const &side, char const *unit,
                    Spread const &value) {
    std::printf("%-34s %-34s %12.2f %s\n", figure.c_str(), side.c_str(), value.median, unit);
    write("value", figure, side, "", unit, value, nullptr);
}

void Results::point(std::string const &figure, std::string const &side, double x, char const *unit,
                    Spread const &y) {
    std::printf("%-34s %-24s %10.0f %12.2f %s\n", figure.c_str(), side.c_str(), x, y.median, unit);
    write("point", figure, side, std::to_string(static_cast<long long>(x)), unit, y, nullptr);
}

void Results::write(char const *kind, std::string const &figure, std::string const &side,
                    std::string const &x, char const *unit, Spread const &value,
                    Outcome const *outcome) const {
    if (file_ == nullptr) {
        return;
    }
    std::fprintf(file_, "%s\t%s\t%s\t%s\t%s\t%.4g\t%.4g\t%.4g", kind, figure.c_str(), side.c_str(), x.c_str(),
                 unit, value.median, value.low, value.high);
    if (outcome != nullptr) {
        Spread const &ratio = outcome->ratio;
        Spread const &processor = outcome->processor_ratio;
        std::fprintf(file_, "\t%.4g\t%.4g\t%.4g\t%.4g\t%.4g\t%.4g", ratio.median, ratio.low, ratio.high,
                     processor.median, processor.low, processor.high);
    }
    std::fputc('\n', file_);
}
