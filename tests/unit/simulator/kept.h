// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_KEPT_H
#define KORVO_TESTS_UNIT_SIMULATOR_KEPT_H

// What a catalogue holds, as texts that can be compared: what the service answers from, and what its store would give
// after a restart.

#include <string>
#include <vector>

#include "support.h"

namespace simulator::tests {

inline std::vector<std::string> kept(Catalogue const &catalogue) {
    std::vector<std::string> lines;
    for (Catalogue::Table const table : {Catalogue::Table::actions, Catalogue::Table::triggers}) {
        Catalogue::Counts counts{};
        for (auto const &[id, entry] : catalogue.entries(table)) {
            std::string line =
                std::string(entry.kind->noun) + " " + std::to_string(id) + " " + entry.fault + " ";
            JsonWriter settings(line);
            writeMembers(settings, settingsRow(*entry.kind), entry.settings);
            settings.close();
            if (table == Catalogue::Table::actions) {
                JsonWriter filters(line);
                writeMembers(filters, filters_row, entry.filters);
                filters.close();
            }
            for (std::uint32_t const partner :
                 table == Catalogue::Table::actions ? catalogue.triggersOf(id) : catalogue.actionsOf(id)) {
                line += " " + std::to_string(partner);
            }
            lines.push_back(line);
            ++counts[entry.kind->type];
        }
        lines.emplace_back(counts == catalogue.counts(table) ? "counted" : "counted wrongly");
    }
    return lines;
}

inline std::vector<std::string> keptBy(Engine &engine) {
    std::vector<std::string> lines;
    engine.change([&lines](EngineState &state) { lines = kept(state.catalogue); });
    return lines;
}

/// In the file, by a connection of its own; the service must have been closed.
inline std::vector<std::string> keptIn(std::string const &path) {
    Store store(path);
    return kept(Catalogue(store));
}

/// In the store of a service, by its own connection.
inline std::vector<std::string> keptIn(Store &store) {
    return kept(Catalogue(store));
}

}  // namespace simulator::tests

#endif
