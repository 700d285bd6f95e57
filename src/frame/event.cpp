// SPDX-License-Identifier: Apache-2.0
// The Action_completed event and its handlers.

#include "frame/initiator.h"
#include "korvo_api_action_engine.h"
#include "operations/protocol.h"

namespace action_completed = protocol::action_completed;

void IAction_engineInitiator::action_engineAction_completed(char const *source, json::Object const &payload) {
    try {
        unsigned int const action_id =
            json::ToUnsigned(payload[action_completed::action_id].CastTo<json::Number>().value());
        std::string const &action_name =
            payload[action_completed::action_name].CastTo<json::String>().value();
        unsigned char const success =
            payload[action_completed::success].CastTo<json::Boolean>().value() ? 1 : 0;

        MutexLock const lock(event_handlers_mutex_);
        for (auto const &[handler, context] : event_handlers_) {
            if (handler != nullptr) {
                handler(action_id, action_name.c_str(), success, source, context);
            }
        }
    } catch (...) {
        logException("action_engineAction_completed");
    }
}

void IAction_engineInitiator::registerEventHandler(EventHandler handler, void *context) noexcept {
    changeEventHandlers("korvo_api_action_engine_action_completed_register_event_handler",
                        [=](EventHandlers &handlers) {
                            if (spare_event_handler_.empty()) {
                                handlers.emplace_back(handler, context);
                            } else {
                                spare_event_handler_.front() = {handler, context};
                                handlers.splice(handlers.end(), spare_event_handler_);
                            }
                        });
}

void IAction_engineInitiator::unregisterEventHandler(EventHandler handler) noexcept {
    changeEventHandlers("korvo_api_action_engine_action_completed_unregister_event_handler",
                        [=](EventHandlers &handlers) {
                            handlers.remove_if([=](auto const &entry) { return entry.first == handler; });
                        });
}

void IAction_engineInitiator::unregisterEventHandler(EventHandler handler, void *context) noexcept {
    changeEventHandlers("korvo_api_action_engine_action_completed_unregister_event_handler_with_context",
                        [=](EventHandlers &handlers) { handlers.remove(std::pair(handler, context)); });
}

void IAction_engineInitiator::changeEventHandlers(char const *function,
                                                  FunctionRef<void(EventHandlers &)> change) noexcept {
    try {
        MutexLock const lock(event_handlers_mutex_);
        change(event_handlers_);
    } catch (...) {
        logException(function);
    }
}

void korvo_api_action_engine_action_completed_register_event_handler(
    void *handle, korvo_api_action_engine_action_completed_event_callback_func_ptr handler,
    void *context) noexcept {
    static_cast<IAction_engineInitiator *>(handle)->registerEventHandler(handler, context);
}

void korvo_api_action_engine_action_completed_unregister_event_handler(
    void *handle, korvo_api_action_engine_action_completed_event_callback_func_ptr handler) noexcept {
    static_cast<IAction_engineInitiator *>(handle)->unregisterEventHandler(handler);
}

void korvo_api_action_engine_action_completed_unregister_event_handler_with_context(
    void *handle, korvo_api_action_engine_action_completed_event_callback_func_ptr handler,
    void *context) noexcept {
    static_cast<IAction_engineInitiator *>(handle)->unregisterEventHandler(handler, context);
}
