// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_HANDLERS_HANDLERS_H
#define KORVO_SIMULATOR_HANDLERS_HANDLERS_H

#include <cstddef>

#include "simulator/handlers/call.h"

namespace simulator::handlers {

/// Carries out a command of the method (methods.h) whose inputs have been checked. `call.kind` is filled in here.
void carryOut(std::size_t method, Call &call);

// actions.cpp
void createAction(Call &call);
void getAction(Call &call);
void modifyAction(Call &call);
void getActions(Call &call);
void getActionCounts(Call &call);
void getActionType(Call &call);
void deleteAction(Call &call);
void getActionFilters(Call &call);
void setActionFilters(Call &call);

// triggers.cpp
void createTrigger(Call &call);
void getTrigger(Call &call);
void modifyTrigger(Call &call);
void getTriggers(Call &call);
void getTriggerCounts(Call &call);
void getTriggerType(Call &call);
void deleteTrigger(Call &call);
void onvifEvent(Call &call);

// associations.cpp
void createAssociation(Call &call);
void deleteAssociation(Call &call);
void getTriggerAssociations(Call &call);
void getActionAssociations(Call &call);

// version.cpp
void getTargetVersion(Call &call);

}  // namespace simulator::handlers

#endif
