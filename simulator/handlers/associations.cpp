// SPDX-License-Identifier: Apache-2.0
#include "simulator/handlers/common.h"
#include "simulator/handlers/handlers.h"

namespace simulator::handlers {

void createAssociation(Call &call) {
    call.state.catalogue.associate(call.input<std::uint32_t>(0), call.input<std::uint32_t>(1));
}

void deleteAssociation(Call &call) {
    call.state.catalogue.dissociate(call.input<std::uint32_t>(0), call.input<std::uint32_t>(1));
}

void getTriggerAssociations(Call &call) {
    Catalogue const &catalogue = call.state.catalogue;
    writePartners(call.response, catalogue.entries(Catalogue::Table::actions), catalogue.actionsOf(call.id()),
                  "action_id", "action_type");
}

void getActionAssociations(Call &call) {
    Catalogue const &catalogue = call.state.catalogue;
    writePartners(call.response, catalogue.entries(Catalogue::Table::triggers),
                  catalogue.triggersOf(call.id()), "trigger_id", "trigger_type");
}

}  // namespace simulator::handlers
