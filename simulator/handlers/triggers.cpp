// SPDX-License-Identifier: Apache-2.0
#include "simulator/handlers/handlers.h"
#include "simulator/handlers/lists.h"

namespace simulator::handlers {

namespace {
constexpr Catalogue::Table triggers = Catalogue::Table::triggers;
}

void createTrigger(Call &call) {
    std::uint32_t const id = call.state.catalogue.create(triggers, *call.kind, call.inputsFrom(0));
    call.state.restartTrigger(id, call.now);
    call.response.number("trigger_id", id);
}

void getTrigger(Call &call) {
    writeMembers(call.response, settingsRow(*call.kind),
                 call.state.catalogue.settings(triggers, *call.kind, call.id()));
}

void modifyTrigger(Call &call) {
    call.state.catalogue.modify(triggers, *call.kind, call.id(), call.inputsFrom(1));
    call.state.restartTrigger(call.id(), call.now);
}

void getTriggers(Call &call) {
    writeEntries(call.response, call.state.catalogue.entries(triggers), "trigger_id", "trigger_type");
}

void getTriggerCounts(Call &call) {
    writeCounts(call.response, call.state.catalogue.entries(triggers), "trigger_types");
}

void getTriggerType(Call &call) {
    call.response.number("trigger_type", call.state.catalogue.at(triggers, call.id()).kind->type);
}

void deleteTrigger(Call &call) {
    call.state.catalogue.remove(triggers, call.id());
    call.state.forgetTrigger(call.id());
}

void onvifEvent(Call &call) {
    call.state.inject({std::move(call.input<std::string>(0)),
                       std::move(call.input<std::string>(1)),
                       {std::move(call.input<Texts>(2)), std::move(call.input<Texts>(3))}},
                      call.now);
}

}  // namespace simulator::handlers
