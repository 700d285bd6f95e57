// SPDX-License-Identifier: Apache-2.0
// What asynchronous calls leave behind: the time of a call while registrations grow to a million, of a cancel that looks at
// all of them under the operation's lock, and of the end of the handle that has them. All is processor time; of a call also
// the service's.

#include <memory>

#include "flights.h"
#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

void ignore(char *, korvo_core_status, char *, char *, unsigned int, unsigned char, unsigned int,
            unsigned int, unsigned int, void *) {}

/// Processor time of this process and others.
template <typename Work>
double millisecondsFor(std::vector<pid_t> const &others, Work const &work) {
    double const start = processorTimeWith(others);
    work();
    return (processorTimeWith(others) - start) / 1000;
}

/// Makes calls until there are so many, and appends what one of the last quarter took, in microseconds.
void callUntil(int wanted, int &made, Flights &flights, pid_t service, std::vector<double> &times) {
    auto const fly = [&](int until) {
        int const before = made;
        double const time = millisecondsFor({service}, [&] {
            for (; made < until; made += in_flight) {
                flights.fly();
            }
        });
        return 1000 * time / (made - before);
    };
    (void)fly(wanted - wanted / 4);
    times.push_back(fly(wanted));
}

void measurePendingCalls(Run &run) {
    useOneCore();
    ServiceProcess const service(KORVO_SIMULATOR);
    Client().createContents();
    std::vector<int> decades = {1000, 10'000};
    if (!run.isShort()) {
        decades.insert(decades.end(), {100'000, 1'000'000});
    }
    std::vector<std::vector<double>> calls(decades.size());
    std::vector<double> cancels;
    std::vector<double> ends;
    for (int repetition = 0; repetition < run.rounds(3); ++repetition) {
        auto flights = std::make_unique<Flights>();
        int made = 0;
        for (std::size_t decade = 0; decade < decades.size(); ++decade) {
            callUntil(decades[decade], made, *flights, service.process(), calls[decade]);
        }
        // Of a callback that is registered nowhere: nothing is removed.
        cancels.push_back(millisecondsFor({}, [&] { cancelRelayAsync(flights->client(), ignore, nullptr); }));
        ends.push_back(millisecondsFor({}, [&] { flights.reset(); }));
    }
    for (std::size_t decade = 0; decade < decades.size(); ++decade) {
        run.results.point("asynchronous call, by calls before it", "ours", decades[decade], "us",
                          spreadOf(calls[decade]));
    }
    char const *const many = run.isShort() ? "10,000" : "1,000,000";
    run.results.value(std::string("deinit after asynchronous calls"), many, "ms", spreadOf(ends));
    run.results.value(std::string("cancel among asynchronous calls"), many, "ms", spreadOf(cancels));
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, measurePendingCalls);
}
