// SPDX-License-Identifier: Apache-2.0
#include "simulator/handlers/common.h"
#include "simulator/handlers/handlers.h"

namespace simulator::handlers {

namespace {
constexpr Catalogue::Table actions = Catalogue::Table::actions;
}

void createAction(Call &call) {
    call.response.number("action_id", call.state.catalogue.create(actions, *call.kind, call.inputsFrom(0)));
}

void getAction(Call &call) {
    writeMembers(call.response, settingsRow(*call.kind),
                 call.state.catalogue.settings(actions, *call.kind, call.id()));
}

void modifyAction(Call &call) {
    call.state.catalogue.modify(actions, *call.kind, call.id(), call.inputsFrom(1));
}

void getActions(Call &call) {
    writeEntries(call.response, call.state.catalogue.entries(actions), "action_id", "action_type");
}

void getActionCounts(Call &call) {
    writeCounts(call.response, call.state.catalogue, actions, "action_types");
}

void getActionType(Call &call) {
    call.response.number("action_type", call.state.catalogue.at(actions, call.id()).kind->type);
}

void deleteAction(Call &call) {
    call.state.catalogue.remove(actions, call.id());
}

void getActionFilters(Call &call) {
    writeMembers(call.response, filters_row, call.state.catalogue.at(actions, call.id()).filters);
}

void setActionFilters(Call &call) {
    call.state.catalogue.setFilters(call.id(), call.inputsFrom(1));
    warnOfFault(call, actions, call.id());
}

}  // namespace simulator::handlers
