// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_ENCODING_H
#define KORVO_BENCH_PEERS_ENCODING_H

#include <memory>
#include <string>
#include <string_view>

#include "peers/contents.h"

/// Commands, responses and events as JSON texts, written and read with one library. What fails throws std::exception.
/// One thread uses an object.
class Encoding {
  public:
    virtual ~Encoding() = default;

    /// Texts that are returned by view stay until the next call.
    virtual std::string_view relayCommand(unsigned int action_id) = 0;
    virtual std::string_view listsCommand() = 0;
    /// What the service says to a command.
    virtual std::string_view answer(std::string_view command) = 0;
    virtual void readRelay(std::string_view response, Relay &relay) = 0;
    virtual void readLists(std::string_view response, Lists &lists) = 0;

    virtual std::string_view event() = 0;
    virtual void readEvent(std::string_view text, Event &event) = 0;
};

/// A library that reads and writes JSON.
struct JsonLibrary {
    char const *name;
    std::unique_ptr<Encoding> (*encoding)();
};

/// The libraries that were there when this was built.
extern JsonLibrary const boost_json;
#ifdef KORVO_BENCH_RAPIDJSON
extern JsonLibrary const rapidjson_pooled;
#endif
#ifdef KORVO_BENCH_NLOHMANN
extern JsonLibrary const nlohmann_json;
#endif

/// The fastest of them: what message libraries carry is written with it, so that it is they that are compared.
JsonLibrary const &fastestJson();

#endif
