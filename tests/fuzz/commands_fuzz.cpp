// SPDX-License-Identifier: Apache-2.0
// Any sequence of commands, one a line, must each get one response with its status, and leave what is in memory and what
// is in the store alike. "+" and a number let so many seconds pass and run what is due.
#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "simulator/catalogue.h"
#include "simulator/dispatcher.h"
#include "simulator/engine.h"
#include "simulator/log.h"
#include "simulator/store.h"

namespace {

using simulator::Catalogue;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool same(Catalogue const &left, Catalogue const &right) {
    for (Catalogue::Table const table : {Catalogue::Table::actions, Catalogue::Table::triggers}) {
        if (left.counts(table) != right.counts(table) ||
            left.entries(table).size() != right.entries(table).size()) {
            return false;
        }
        for (auto const &[id, entry] : left.entries(table)) {
            auto const *const other = right.find(table, id);
            bool const partners_are_same =
                other != nullptr &&
                (table == Catalogue::Table::actions ? left.triggersOf(id) == right.triggersOf(id)
                                                    : left.actionsOf(id) == right.actionsOf(id));
            if (!partners_are_same || entry.kind != other->kind || entry.settings != other->settings ||
                entry.filters != other->filters || entry.fault != other->fault) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    std::string_view rest(reinterpret_cast<char const *>(data), size);
    simulator::Log const log([](korvo_core_log_priority, std::string const &) {});
    simulator::Store store("");
    simulator::Engine::Time now{std::chrono::hours(1)};
    std::size_t published = 0;
    std::size_t runs = 0;
    simulator::Engine engine(
        Catalogue(store, {Catalogue::Nonsense::kept}),
        {[&now] { return now; }, [] { return simulator::Wall(std::chrono::seconds(1795417140)); },
         [] {
             return simulator::LocalTime{3, 43'200};
         },
         [&runs](simulator::Job const &, auto const &done) {
             ++runs;
             done({runs % 2 == 0, "done"});
         },
         [&published](std::string const &event) {
             ++published;
             boost::json::parse(event).as_object();
         },
         [] {}},
        log);
    simulator::Dispatcher dispatcher(engine, {}, log, [&now] { return now; });
    while (!rest.empty()) {
        std::string_view const line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        if (!line.empty() && line[0] == '+') {
            now += std::chrono::seconds(line.size() > 1 ? static_cast<unsigned char>(line[1]) : 0);
            for (int steps = 0; steps < 1000 && engine.step(); ++steps) {
            }
            continue;
        }
        boost::json::value const response = boost::json::parse(dispatcher.answer(line).text);
        std::int64_t const status = response.as_object().at("status").as_int64();
        require(response.as_object().at("command").is_string());
        require(status == 0 || status == 1 || status == 8 || status == 9);
    }
    require(published == runs);
    engine.change([&store](simulator::EngineState &state) {
        require(same(state.catalogue, Catalogue(store, {Catalogue::Nonsense::kept})));
    });
    return 0;
}
