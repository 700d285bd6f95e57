// SPDX-License-Identifier: Apache-2.0
// Lets a relay switch during office hours alone: two windows of time, and then none.
#include <cstdio>
#include <cstdlib>
#include <korvo/action_engine.hpp>

namespace {

constexpr unsigned int hour = 3600;

void showFilters(korvo::ActionEngine const &engine, korvo::ActionId action) {
    auto const filters = engine.get_action_filters(action).value();
    for (korvo::ActionFilter const &filter : filters) {
        std::printf("  weekdays %u, from %u to %u o'clock\n", filter.weekdays, filter.start / hour,
                    filter.end / hour);
    }
    if (filters.empty()) {
        std::puts("  at any time");
    }
}

}  // namespace

int main() {
    try {
        korvo::ActionEngine const engine = korvo::ActionEngine::open({"relay_office_hours"}).value();
        korvo::RelayAction gate;
        gate.action_name = "gate";
        gate.relay_target = "relay 1";
        gate.config_repeat_cycles = 1;
        gate.config_on_time_ms = 500;
        gate.config_off_time_ms = 500;
        korvo::ActionId const action = engine.create_relay_action(gate).value();

        unsigned int const office_days = kMonday + kTuesday + kWednesday + kThursday + kFriday;
        engine
            .set_action_filters(action,
                                {{office_days, 8 * hour, 12 * hour}, {office_days, 13 * hour, 17 * hour}})
            .value();
        std::puts("The relay may switch:");
        showFilters(engine, action);
        engine.set_action_filters(action, {}).value();
        std::puts("And without filters:");
        showFilters(engine, action);
        engine.delete_action(action).value();
        return EXIT_SUCCESS;
    } catch (korvo::Error const &error) {
        std::fprintf(stderr, "relay_office_hours: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
