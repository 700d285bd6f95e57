// SPDX-License-Identifier: Apache-2.0
// How a synchronous call grows with what it carries, and with what the service keeps: processor time of client and service
// together.

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "client.h"
#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

/// Processor time that a call takes, in microseconds, over some rounds.
Spread timeOf(Run const &run, pid_t service, int calls, std::function<void()> const &call) {
    call();
    std::vector<double> times;
    for (int round = 0; round < run.rounds(9); ++round) {
        double const start = processorTimeWith({service});
        for (int count = 0; count < calls; ++count) {
            call();
        }
        times.push_back((processorTimeWith({service}) - start) / calls);
    }
    return spreadOf(times);
}

unsigned int createWiperAction(Client const &client, std::string const &name) {
    unsigned int action_id = 0;
    require(
        korvo_api_action_engine_create_wiper_action_send(client.handle(), nullptr, name.c_str(), &action_id),
        "create_wiper_action");
    return action_id;
}

void growTexts(Run &run, pid_t service, Client const &client) {
    for (int const size : {10, 100, 1000, 10'000, 100'000, 900'000}) {
        unsigned int const action_id =
            createWiperAction(client, std::string(static_cast<std::size_t>(size), 'x'));
        run.results.point("synchronous call, by bytes of its text", "get_wiper_action", size, "us",
                          timeOf(run, service, run.calls(size < 10'000 ? 200 : 20), [&] {
                              char *name = nullptr;
                              require(korvo_api_action_engine_get_wiper_action_send(client.handle(), nullptr,
                                                                                    action_id, &name),
                                      "get_wiper_action");
                              std::free(name);
                          }));
        require(korvo_api_action_engine_delete_action_send(client.handle(), nullptr, action_id),
                "delete_action");
    }
}

/// Lists that are as long as asked for, whatever else the service keeps: the filters of an action.
void growLists(Run &run, pid_t service, Client const &client) {
    unsigned int const action_id = createWiperAction(client, "door");
    for (int const size : {1, 10, 100, 1000, 10'000, 20'000}) {
        unsigned int **const list = korvo_core_alloc_uint_array(static_cast<unsigned int>(size));
        require(korvo_api_action_engine_set_action_filters_send(client.handle(), nullptr, action_id, list,
                                                                list, list),
                "set_action_filters");
        korvo_core_free_uint_array(list);
        run.results.point("synchronous call, by numbers in its lists", "get_action_filters", 3 * size, "us",
                          timeOf(run, service, run.calls(size < 1000 ? 200 : 10), [&] {
                              unsigned int **lists[3] = {};
                              require(
                                  korvo_api_action_engine_get_action_filters_send(
                                      client.handle(), nullptr, action_id, &lists[0], &lists[1], &lists[2]),
                                  "get_action_filters");
                              for (unsigned int **const got : lists) {
                                  korvo_core_free_uint_array(got);
                              }
                          }));
    }
    require(korvo_api_action_engine_delete_action_send(client.handle(), nullptr, action_id), "delete_action");
}

char prefix[] = "tns1";
char uri[] = "http://www.onvif.org/ver10/topics";
char *prefixes[] = {prefix, nullptr};
char *uris[] = {uri, nullptr};

/// A trigger that fires on one topic, bound to no action.
void createTrigger(Client const &client, std::string const &topic) {
    unsigned int trigger_id = 0;
    require(korvo_api_action_engine_create_onvif_trigger_send(client.handle(), nullptr, "door", topic.c_str(),
                                                              "", "", prefixes, uris, &trigger_id),
            "create_onvif_trigger");
}

void measureCatalogue(Run &run, pid_t service, Client const &client, int entries, unsigned int one_of_them) {
    void *const handle = client.handle();
    int const calls = run.calls(entries < 10'000 ? 100 : 10);
    auto const measure = [&](char const *call, std::function<void()> const &once) {
        run.results.point("synchronous call, by entries of the catalogue", call, entries, "us",
                          timeOf(run, service, calls, once));
    };
    measure("get_wiper_action", [&] {
        char *name = nullptr;
        require(korvo_api_action_engine_get_wiper_action_send(handle, nullptr, one_of_them, &name),
                "get_wiper_action");
        std::free(name);
    });
    measure("get_action_counts", [&] {
        unsigned int total = 0;
        unsigned int **types = nullptr;
        unsigned int **counts = nullptr;
        require(korvo_api_action_engine_get_action_counts_send(handle, nullptr, &total, &types, &counts),
                "get_action_counts");
        korvo_core_free_uint_array(types);
        korvo_core_free_uint_array(counts);
    });
    measure("create_wiper_action and delete_action", [&] {
        unsigned int const action_id = createWiperAction(client, "door");
        require(korvo_api_action_engine_delete_action_send(handle, nullptr, action_id), "delete_action");
    });
    measure("onvif_event that fires nothing", [&] {
        require(korvo_api_action_engine_onvif_event_send(handle, nullptr, "tns1:Device/Trigger/Relay",
                                                         "<State/>", prefixes, uris),
                "onvif_event");
    });
    auto const list_all = [&] {
        by_hand::BlockLists lists;
        return korvo_api_action_engine_get_actions_send(handle, nullptr, &lists.ids, &lists.types);
    };
    // A response has a bound: what is too long for one has no time.
    if (list_all() == KORVO_CORE_STATUS_NO_ERROR) {
        measure("get_actions", [&] { require(list_all(), "get_actions"); });
    }
}

void growCatalogue(Run &run, pid_t service, Client const &client) {
    int made = 0;
    unsigned int last = 0;
    std::vector<int> sizes = {100, 1000, 10'000};
    if (!run.isShort()) {
        // One place stays free for the action that is made and deleted.
        sizes.push_back(49'999);
    }
    for (int const size : sizes) {
        for (; made < size; ++made) {
            last = createWiperAction(client, "door");
            createTrigger(client, "tns1:Device/Trigger/Input" + std::to_string(made));
        }
        measureCatalogue(run, service, client, size, last);
    }
}

void measureGrowth(Run &run) {
    useOneCore();
    ServiceProcess const service(KORVO_SIMULATOR);
    Client const client;
    growTexts(run, service.process(), client);
    growLists(run, service.process(), client);
    growCatalogue(run, service.process(), client);
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, measureGrowth);
}
