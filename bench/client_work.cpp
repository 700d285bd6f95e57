// SPDX-License-Identifier: Apache-2.0
// The client library's own work for one call: building the command, writing it as JSON, reading the response and handing
// out its members. Beside it what one writes by hand for this one call, and JSON libraries. The core is replaced by
// functions that answer at once.
//
// With --only SIDE COUNT it makes so many calls of one side of `relay` or `lists` and nothing else, for a tool that counts
// instructions: bench-client-work --only "relay: ours" 1000

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <korvo/action_engine.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "allocations.h"
#include "by_hand.h"
#include "client.h"
#include "korvo_api_action_engine.h"
#include "korvo_core_private.h"
#include "peers/encoding.h"
#include "program.h"
#include "side_by_side.h"

namespace {

/// What is sent and answered now.
struct Exchange {
    std::string_view command;
    std::string_view response;
};
Exchange exchange;

std::string keptAnswer(std::string_view command) {
    return std::string(boost_json.encoding()->answer(command));
}

Exchange const &relayExchange() {
    static std::string const command(boost_json.encoding()->relayCommand(contents::action_id));
    static std::string const response = keptAnswer(command);
    static Exchange const relay = {command, response};
    return relay;
}

Exchange const &listsExchange() {
    static std::string const command(boost_json.encoding()->listsCommand());
    static std::string const response = keptAnswer(command);
    static Exchange const lists = {command, response};
    return lists;
}

}  // namespace

// In place of the core's own: the program's functions go before those of its libraries.
korvo_core_status korvo_core_private_command_send(void *, char const *, char const *, char const *,
                                                  char const *text, size_t length, void const *,
                                                  char const *) {
    // Not the same text: one of the JSON libraries sorts the members.
    return text != nullptr && length == exchange.command.size() ? KORVO_CORE_STATUS_NO_ERROR
                                                                : KORVO_CORE_STATUS_INVALID_PARAMS;
}

korvo_core_status korvo_core_private_response_receive(void *, int, char const *, char **text,
                                                      size_t *length) {
    *length = exchange.response.size();
    *text = static_cast<char *>(std::malloc(*length + 1));
    if (*text == nullptr) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
    std::memcpy(*text, exchange.response.data(), *length + 1);
    return KORVO_CORE_STATUS_NO_ERROR;
}

namespace {

/// A response from the core that is replaced, to a command that was written by somebody else.
class Received {
  public:
    explicit Received(std::string_view command) {
        static unsigned int last_request = 0;
        char request_id[37];
        std::snprintf(request_id, sizeof request_id, "%036u", ++last_request);
        require(korvo_core_private_command_send(nullptr, nullptr, nullptr, request_id, command.data(),
                                                command.size(), nullptr, nullptr),
                "sending");
        require(korvo_core_private_response_receive(nullptr, 0, request_id, &text_, &size_), "receiving");
    }
    ~Received() { std::free(text_); }
    Received(Received const &) = delete;
    Received &operator=(Received const &) = delete;

    char const *text() const { return text_; }
    std::string_view view() const { return {text_, size_}; }

  private:
    char *text_ = nullptr;
    std::size_t size_ = 0;
};

using Call = std::function<void()>;

/// A way to make one call, and what it is called.
struct Way {
    std::string name;
    Call call;
};

std::vector<JsonLibrary const *> jsonLibraries() {
    return {
#ifdef KORVO_BENCH_RAPIDJSON
        &rapidjson_pooled,
#endif
        &boost_json,
#ifdef KORVO_BENCH_NLOHMANN
        &nlohmann_json,
#endif
    };
}

/// A messaging handle that is given is never looked into.
Client const &client() {
    static char messaging = 0;
    static Client const only(&messaging);
    return only;
}

std::vector<Way> waysToGetRelay() {
    std::vector<Way> ways = {{"by hand",
                              [] {
                                  char command[64];
                                  std::size_t const size = by_hand::writeRelayCommand(command, sizeof command,
                                                                                      contents::action_id);
                                  Received const received({command, size});
                                  Relay relay;
                                  by_hand::readRelay(received.text(), relay);
                                  relay.check();
                              }},
                             {"ours", [] {
                                  Relay relay;
                                  client().getRelay(relay);
                                  relay.check();
                              }}};
    for (JsonLibrary const *const json : jsonLibraries()) {
        std::shared_ptr<Encoding> const encoding = json->encoding();
        ways.push_back({json->name, [encoding] {
                            Received const received(encoding->relayCommand(contents::action_id));
                            Relay relay;
                            encoding->readRelay(received.view(), relay);
                            relay.check();
                        }});
    }
    return ways;
}

std::vector<Way> waysToGetLists() {
    std::vector<Way> ways = {{"by hand",
                              [lists = Lists()]() mutable {
                                  Received const received(exchange.command);
                                  by_hand::readLists(received.text(), lists);
                              }},
                             {"by hand, into callers' blocks",
                              [] {
                                  Received const received(exchange.command);
                                  by_hand::BlockLists lists;
                                  by_hand::readLists(received.text(), lists);
                              }},
                             {"ours", [] {
                                  by_hand::BlockLists lists;
                                  client().getLists(lists);
                              }}};
    for (JsonLibrary const *const json : jsonLibraries()) {
        std::shared_ptr<Encoding> const encoding = json->encoding();
        ways.push_back({json->name, [encoding, lists = Lists()]() mutable {
                            Received const received(encoding->listsCommand());
                            encoding->readLists(received.view(), lists);
                        }});
    }
    return ways;
}

/// The plain function, and the C++ layer on top of it.
std::vector<Way> waysThroughLayers() {
    static korvo::ActionEngine const engine = korvo::ActionEngine::open({"bench"}).value();
    return {{"plain function",
             [] {
                 Relay relay;
                 client().getRelay(relay);
                 relay.check();
             }},
            {"C++ layer", [] {
                 korvo::RelayAction const relay =
                     engine.get_relay_action(korvo::ActionId{contents::action_id}).value();
                 if (relay.action_name != contents::action_name ||
                     relay.config_on_time_ms != contents::on_time_ms) {
                     throw std::runtime_error("the C++ layer gives something else");
                 }
             }}};
}

struct Work {
    char const *figure;
    char const *name;
    Exchange const &(*exchange)();
    std::vector<Way> (*ways)();
    int calls_a_round;
};

constexpr Work works[] = {{"client work, relay", "relay", relayExchange, waysToGetRelay, 5000},
                          {"client work, lists", "lists", listsExchange, waysToGetLists, 200},
                          {"layers, relay", "layers", relayExchange, waysThroughLayers, 5000}};

void compareClientWork(Run &run) {
    useOneCore();
    for (Work const &work : works) {
        exchange = work.exchange();
        int const calls = run.calls(work.calls_a_round);
        std::vector<Side> sides;
        std::vector<Way> const ways = work.ways();
        for (Way const &way : ways) {
            sides.push_back({way.name,
                             [call = way.call, calls] {
                                 for (int count = 0; count < calls; ++count) {
                                     call();
                                 }
                             },
                             {}});
        }
        run.results.compared(work.figure, compareSideBySide(sides, calls, run.rounds()));
        for (Way const &way : ways) {
            double const allocated = static_cast<double>(allocationsIn(way.call));
            run.results.value(std::string("allocations, ") + work.name, way.name, "allocations",
                              {allocated, allocated, allocated});
        }
    }
}

int callOnly(std::string const &side, int count) {
    for (Work const &work : works) {
        exchange = work.exchange();
        for (Way const &way : work.ways()) {
            if (side == std::string(work.name) + ": " + way.name) {
                for (int made = 0; made < count; ++made) {
                    way.call();
                }
                return EXIT_SUCCESS;
            }
        }
    }
    std::fprintf(stderr, "there is no side '%s'\n", side.c_str());
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 4 && std::strcmp(argv[1], "--only") == 0) {
        return callOnly(argv[2], std::atoi(argv[3]));
    }
    return runBenchmark(argc, argv, compareClientWork);
}
