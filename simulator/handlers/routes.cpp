// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "simulator/handlers/handlers.h"
#include "simulator/methods.h"

namespace simulator::handlers {

namespace {

using Handler = void (*)(Call &);

struct Route {
    Handler handler = nullptr;
    EntryKind const *kind = nullptr;
    // Compilers with checks of undefined behaviour do not compare a function with NULL at compile time.
    bool set = false;
};
using Routes = std::array<Route, method_count>;

constexpr Routes makeRoutes() {
    Routes routes{};
    auto const set = [&routes](std::size_t method, Handler handler, EntryKind const *kind = nullptr) {
        routes[method] = {handler, kind, true};
    };
    for (EntryKind const &kind : action_kinds) {
        set(kind.create, createAction, &kind);
        set(kind.get, getAction, &kind);
        set(kind.modify, modifyAction, &kind);
    }
    for (EntryKind const &kind : trigger_kinds) {
        set(kind.create, createTrigger, &kind);
        set(kind.get, getTrigger, &kind);
        set(kind.modify, modifyTrigger, &kind);
    }
    set(operations::get_actions, getActions);
    set(operations::get_action_counts, getActionCounts);
    set(operations::get_action_type, getActionType);
    set(operations::delete_action, deleteAction);
    set(operations::get_action_filters, getActionFilters);
    set(operations::set_action_filters, setActionFilters);
    set(operations::get_triggers, getTriggers);
    set(operations::get_trigger_counts, getTriggerCounts);
    set(operations::get_trigger_type, getTriggerType);
    set(operations::delete_trigger, deleteTrigger);
    set(operations::onvif_event, onvifEvent);
    set(operations::create_association, createAssociation);
    set(operations::delete_association, deleteAssociation);
    set(operations::get_trigger_associations, getTriggerAssociations);
    set(operations::get_action_associations, getActionAssociations);
    set(version_query_method, getTargetVersion);
    return routes;
}

constexpr bool complete(Routes const &routes) {
    for (Route const &route : routes) {
        if (!route.set) {
            return false;
        }
    }
    return true;
}

constexpr Routes routes = makeRoutes();
static_assert(complete(routes), "each method has a handler");

}  // namespace

void carryOut(std::size_t method, Call &call) {
    Route const &route = routes[method];
    call.kind = route.kind;
    route.handler(call);
}

}  // namespace simulator::handlers
