// SPDX-License-Identifier: Apache-2.0
// korvo-action-engine list with everything: settings, filters and bindings of 10,000 actions, from the start of the
// program to its end, beside a program that reads the same with one call after the other.

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "client.h"
#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

constexpr unsigned int triggers = 100;

using List = std::vector<unsigned int *>;

/// A list as functions take it: pointers to numbers, with NULL behind the last.
List listOf(unsigned int &number) {
    return {&number, nullptr};
}

/// So many actions, each with a filter and one trigger that runs it.
void fill(Client const &client, unsigned int actions) {
    for (unsigned int count = 0; count < triggers; ++count) {
        unsigned int trigger_id = 0;
        require(korvo_api_action_engine_create_timer_trigger_send(client.handle(), nullptr, "never",
                                                                  1'000'000, &trigger_id),
                "create_timer_trigger");
    }
    unsigned int weekdays = 62;
    unsigned int start = 28'800;
    unsigned int end = 64'800;
    List weekday_list = listOf(weekdays);
    List start_list = listOf(start);
    List end_list = listOf(end);
    for (unsigned int count = 0; count < actions; ++count) {
        unsigned int const action_id = client.createRelayAction();
        require(
            korvo_api_action_engine_set_action_filters_send(
                client.handle(), nullptr, action_id, weekday_list.data(), start_list.data(), end_list.data()),
            "set_action_filters");
        require(korvo_api_action_engine_create_association_send(client.handle(), nullptr,
                                                                count % triggers + 1, action_id),
                "create_association");
    }
}

void requireCount(unsigned int count, unsigned int wanted) {
    if (count != wanted) {
        throw std::runtime_error("read " + std::to_string(count) + " where there are " +
                                 std::to_string(wanted));
    }
}

/// What the tool reads, with one call after the other. Without a log, as the tool has it.
void readInALoop(void *handle, unsigned int actions) {
    by_hand::BlockLists all_actions;
    by_hand::BlockLists all_triggers;
    require(korvo_api_action_engine_get_actions_send(handle, nullptr, &all_actions.ids, &all_actions.types),
            "get_actions");
    require(
        korvo_api_action_engine_get_triggers_send(handle, nullptr, &all_triggers.ids, &all_triggers.types),
        "get_triggers");
    unsigned int read = 0;
    for (unsigned int **id = all_actions.ids; *id != nullptr; ++id, ++read) {
        Relay relay;
        require(korvo_api_action_engine_get_relay_action_send(
                    handle, nullptr, **id, &relay.action_name, &relay.relay_target, &relay.config_mode,
                    &relay.config_normally_closed, &relay.config_repeat_cycles, &relay.config_on_time_ms,
                    &relay.config_off_time_ms),
                "get_relay_action");
        relay.check();
        by_hand::BlockLists filters;
        by_hand::BlockLists ends;
        require(korvo_api_action_engine_get_action_filters_send(handle, nullptr, **id, &filters.ids,
                                                                &filters.types, &ends.ids),
                "get_action_filters");
    }
    requireCount(read, actions);
    read = 0;
    for (unsigned int **id = all_triggers.ids; *id != nullptr; ++id) {
        char *name = nullptr;
        unsigned int seconds = 0;
        require(korvo_api_action_engine_get_timer_trigger_send(handle, nullptr, **id, &name, &seconds),
                "get_timer_trigger");
        std::free(name);
        by_hand::BlockLists bound;
        require(korvo_api_action_engine_get_trigger_associations_send(handle, nullptr, **id, &bound.ids,
                                                                      &bound.types),
                "get_trigger_associations");
        for (unsigned int **action = bound.ids; *action != nullptr; ++action) {
            ++read;
        }
    }
    requireCount(read, actions);
}

/// Runs the tool to its end, and counts the lines that it writes.
void list(unsigned int actions) {
    std::array<int, 2> ends{};
    require(pipe2(ends.data(), O_CLOEXEC), "pipe2");
    pid_t const process = fork();
    if (process == 0) {
        (void)dup2(ends[1], STDOUT_FILENO);
        execl(KORVO_TOOL, KORVO_TOOL, "list", static_cast<char *>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    unsigned int lines = 0;
    std::array<char, 65'536> part{};
    for (ssize_t size = 1; size > 0;) {
        size = read(ends[0], part.data(), part.size());
        for (ssize_t place = 0; place < size; ++place) {
            lines += part[static_cast<std::size_t>(place)] == '\n' ? 1U : 0U;
        }
    }
    close(ends[0]);
    int status = 0;
    require(waitpid(process, &status, 0) == process ? status : -1, "korvo-action-engine list");
    // Two headings, and a line between the tables.
    requireCount(lines, actions + triggers + 3);
}

void measureList(Run &run) {
    unsigned int const actions = run.isShort() ? 200 : 10'000;
    useOneCore();
    ServiceProcess const service(KORVO_SIMULATOR);
    Client const client;
    fill(client, actions);
    // Elapsed times only: processor times would not have the tool's own, which is another process in each round.
    auto const outcomes =
        compareSideBySide({{"call after call", [&] { readInALoop(client.handle(), actions); }, {}},
                           {"tool", [&] { list(actions); }, {}}},
                          1, run.rounds(11));
    Spread const time = outcomes.back().elapsed;
    run.results.value("list of 10,000 actions", "time", "ms",
                      {time.median / 1000, time.low / 1000, time.high / 1000});
    run.results.value("list of 10,000 actions", "beside call after call", "times as long",
                      outcomes.back().ratio);
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, measureList);
}
