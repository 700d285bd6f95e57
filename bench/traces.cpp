// SPDX-License-Identifier: Apache-2.0
// The synchronous round trip with a service that keeps traces, as it does by itself, beside one that keeps none.

#include <functional>
#include <string>
#include <vector>

#include "client.h"
#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

/// A service, and a client of it that has asked it already.
struct Pair {
    explicit Pair(std::vector<std::string> const &arguments) : service(KORVO_SIMULATOR, arguments) {
        client.createContents();
        char prefix[] = "tt";
        char uri[] = "http://www.onvif.org/ver10/schema";
        char *prefixes[] = {prefix, nullptr};
        char *uris[] = {uri, nullptr};
        unsigned int trigger_id = 0;
        require(
            korvo_api_action_engine_create_onvif_trigger_send(
                client.handle(), nullptr, "motion", "MotionAlarm", "",
                "boolean(//tt:SimpleItem[@Name=\"State\" and @Value=\"true\"])", prefixes, uris, &trigger_id),
            "create_onvif_trigger");
    }

    /// Its trigger looks at it and does not take it, which is what most traces tell.
    void sendEvent() const {
        char prefix[] = "tt";
        char uri[] = "http://www.onvif.org/ver10/schema";
        char *prefixes[] = {prefix, nullptr};
        char *uris[] = {uri, nullptr};
        require(
            korvo_api_action_engine_onvif_event_send(
                client.handle(), nullptr, "MotionAlarm",
                "<tt:Message><tt:Data><tt:SimpleItem Name=\"State\" Value=\"false\"/></tt:Data></tt:Message>",
                prefixes, uris),
            "onvif_event");
    }

    ServiceProcess service;
    Client client;
};

void compareTraces(Run &run) {
    useOneCore();
    // Each meets its own client in a folder of its own.
    Pair const without({"--traces", "0"});
    Pair const with({});
    int const calls = run.calls(500);
    auto const side = [calls](char const *name, Pair const &pair, std::function<void()> const &call) {
        return Side{name,
                    [calls, call] {
                        for (int count = 0; count < calls; ++count) {
                            call();
                        }
                    },
                    {pair.service.process()}};
    };
    auto const event_of = [](Pair const &pair) { return [&pair] { pair.sendEvent(); }; };
    auto const relay_of = [](Pair const &pair) {
        return [&pair] {
            Relay relay;
            pair.client.getRelay(relay);
            relay.check();
        };
    };
    run.results.compared("traces, event",
                         compareSideBySide({side("without traces", without, event_of(without)),
                                            side("with traces", with, event_of(with))},
                                           calls, run.rounds()));
    run.results.compared("traces, relay",
                         compareSideBySide({side("without traces", without, relay_of(without)),
                                            side("with traces", with, relay_of(with))},
                                           calls, run.rounds()));
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, compareTraces);
}
