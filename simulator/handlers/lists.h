// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_HANDLERS_LISTS_H
#define KORVO_SIMULATOR_HANDLERS_LISTS_H

// Lists that actions and triggers are answered with alike.

#include <array>

#include "simulator/handlers/call.h"

namespace simulator::handlers {

/// The counts of each type that occurs, types ascending.
inline void writeCounts(JsonWriter &response, Catalogue::Entries const &entries, char const *types_name) {
    std::array<std::uint32_t, std::size(action_kinds)> counts{};
    for (auto const &entry : entries) {
        ++counts[entry.second.kind->type];
    }
    Numbers types;
    Numbers type_counts;
    for (std::uint32_t type = 0; type < counts.size(); ++type) {
        if (counts[type] != 0) {
            types.push_back(type);
            type_counts.push_back(counts[type]);
        }
    }
    response.number("total", static_cast<std::uint32_t>(entries.size()));
    response.list(types_name, types);
    response.list("counts", type_counts);
}

/// The entries of a table: identifiers, and in a second list their types.
inline void writeEntries(JsonWriter &response, Catalogue::Entries const &entries, char const *id_name,
                         char const *type_name) {
    response.list(id_name, entries, [](auto const &entry) { return entry.first; });
    response.list(type_name, entries, [](auto const &entry) { return entry.second.kind->type; });
}

/// The same for some of its entries.
inline void writePartners(JsonWriter &response, Catalogue::Entries const &entries, Numbers const &ids,
                          char const *id_name, char const *type_name) {
    response.list(id_name, ids);
    response.list(type_name, ids, [&](std::uint32_t id) { return entries.at(id).kind->type; });
}

}  // namespace simulator::handlers

#endif
