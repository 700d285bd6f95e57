// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_HANDLERS_COMMON_H
#define KORVO_SIMULATOR_HANDLERS_COMMON_H

// What handlers of actions and of triggers do alike.

#include <exception>

#include "simulator/handlers/call.h"

namespace simulator::handlers {

/// The counts of each type that occurs, types ascending.
inline void writeCounts(JsonWriter &response, Catalogue const &catalogue, Catalogue::Table table,
                        char const *types_name) {
    Catalogue::Counts const &counts = catalogue.counts(table);
    Numbers types;
    Numbers type_counts;
    for (std::uint32_t type = 0; type < counts.size(); ++type) {
        if (counts[type] != 0) {
            types.push_back(type);
            type_counts.push_back(counts[type]);
        }
    }
    response.number("total", static_cast<std::uint32_t>(catalogue.entries(table).size()));
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

/// Says in the log that what a command has made can never fire or run, where that is not refused. The command is carried
/// out, so a remark that memory is too short for is left out.
inline void warnOfFault(Call &call, Catalogue::Table table, std::uint32_t id) noexcept {
    try {
        std::string const &fault = call.state.catalogue.at(table, id).fault;
        if (!fault.empty()) {
            call.remarks.warnings.push_back(
                (table == Catalogue::Table::actions ? "action " : "trigger ") + std::to_string(id) +
                (table == Catalogue::Table::actions ? " never runs: " : " never fires: ") + fault);
        }
    } catch (std::exception const &) {
        call.remarks.warnings.clear();
    }
}

}  // namespace simulator::handlers

#endif
