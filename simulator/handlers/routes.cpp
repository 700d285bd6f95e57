// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "simulator/handlers/handlers.h"
#include "simulator/methods.h"

namespace simulator::handlers {

namespace {

struct Route {
    void (*handler)(Call &) = nullptr;
    EntryKind const *kind = nullptr;
};
using Routes = std::array<Route, method_count>;

constexpr Routes makeRoutes() {
    Routes routes{};
    for (EntryKind const &kind : action_kinds) {
        routes[kind.create] = {createAction, &kind};
        routes[kind.get] = {getAction, &kind};
        routes[kind.modify] = {modifyAction, &kind};
    }
    for (EntryKind const &kind : trigger_kinds) {
        routes[kind.create] = {createTrigger, &kind};
        routes[kind.get] = {getTrigger, &kind};
        routes[kind.modify] = {modifyTrigger, &kind};
    }
    routes[operations::get_actions] = {getActions, nullptr};
    routes[operations::get_action_counts] = {getActionCounts, nullptr};
    routes[operations::get_action_type] = {getActionType, nullptr};
    routes[operations::delete_action] = {deleteAction, nullptr};
    routes[operations::get_action_filters] = {getActionFilters, nullptr};
    routes[operations::set_action_filters] = {setActionFilters, nullptr};
    routes[operations::get_triggers] = {getTriggers, nullptr};
    routes[operations::get_trigger_counts] = {getTriggerCounts, nullptr};
    routes[operations::get_trigger_type] = {getTriggerType, nullptr};
    routes[operations::delete_trigger] = {deleteTrigger, nullptr};
    routes[operations::onvif_event] = {onvifEvent, nullptr};
    routes[operations::create_association] = {createAssociation, nullptr};
    routes[operations::delete_association] = {deleteAssociation, nullptr};
    routes[operations::get_trigger_associations] = {getTriggerAssociations, nullptr};
    routes[operations::get_action_associations] = {getActionAssociations, nullptr};
    routes[version_query_method] = {getTargetVersion, nullptr};
    return routes;
}

constexpr bool complete(Routes const &routes) {
    for (Route const &route : routes) {
        if (route.handler == nullptr) {
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
