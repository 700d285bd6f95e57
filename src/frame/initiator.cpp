// SPDX-License-Identifier: Apache-2.0
#include "frame/initiator.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include "frame/function_name.h"
#include "frame/messaging_entries.h"
#include "operations/protocol.h"

namespace {

/// The bound that the shared messaging code gets for its bookkeeping.
constexpr unsigned int bookkeeping_count = 10;

}  // namespace

IAction_engineInitiator::IAction_engineInitiator(void *messaging_handle, void *logging_handle,
                                                 unsigned char subscribe_events, char const *initiator_name)
    : korvoInitiatorInterfaces(messaging_handle, logging_handle, protocol::major_version,
                               protocol::minor_version, initiator_name, bookkeeping_count) {
    initializeMethodStructures();
    // Last of all: once it has succeeded, events may arrive.
    initializeEventStructures(subscribe_events);
}

IAction_engineInitiator::~IAction_engineInitiator() {
    is_ending_.store(true, std::memory_order_relaxed);
    // First of all, so that no message meets a half-destroyed object.
    closeOwnedMessaging();
    // A call that the closing has ended still has its way back through the object.
    while (visits_.load(std::memory_order_acquire) != 0 && process_ == getpid()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void IAction_engineInitiator::initializeMethodStructures() {
    methods_ = {
#define OPERATION(op, Method, INPUTS, RESULTS) \
    {#Method, {&IAction_engineInitiator::action_engine##Method##Callback, &op##_callbacks}},
#define VERSION_QUERY OPERATION
#include "operations/operations.def"
    };
}

void IAction_engineInitiator::initializeEventStructures(unsigned char subscribe_events) {
    {
        MutexLock const lock(event_handlers_mutex_);
        event_handlers_.clear();
        if (subscribe_events == 0) {
            return;
        }
        spare_event_handler_.emplace_back(nullptr, nullptr);
    }
    // Before the messaging layer knows the object: it may deliver at once, on a thread of its own.
    events_ = {{protocol::action_completed::event, &IAction_engineInitiator::action_engineAction_completed}};

    auto const require = [this](korvo_core_status status, char const *failure) {
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            IPC_LOG_ERR("%s", failure);
            throw std::runtime_error(failure);
        }
    };
    require(korvo_core_ipc_initiator_event_subscribe(messaging_handle_, protocol::service),
            "initializeEventStructures:failed call to subscribe to events");
    require(
        korvo_core_ipc_initiator_event_receive_callback(messaging_handle_, messaging_entries::event, this),
        "initializeEventStructures:failed call to receive callbacks");
}

void IAction_engineInitiator::subclassResponseDispatch(char const *method, char *target, char *request_id,
                                                       json::Object &response) {
    auto const entry = methods_.find(method);
    if (entry != methods_.end()) {
        (this->*entry->second.respond)(target, request_id, response);
    }
}

bool IAction_engineInitiator::isAsynchronous(char const *method, char const *request_id) {
    if (method == nullptr || request_id == nullptr) {
        return false;
    }
    auto const entry = methods_.find(method);
    return entry != methods_.end() && entry->second.registry->isInHand(request_id);
}

void IAction_engineInitiator::subclassEventDispatch(char const *source, char const *event,
                                                    json::Object &payload) {
    auto const entry = events_.find(event);
    if (entry != events_.end()) {
        (this->*entry->second)(source, payload);
    }
}

bool IAction_engineInitiator::refusesInCallback(char const *function) noexcept {
    if (delivering_.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
        return false;
    }
    try {
        IPC_LOG_ERR("%s does nothing: it was called from inside a callback of its handle", function);
    } catch (...) {
        // The handle stays, whether or not that can be told.
    }
    return true;
}

void IAction_engineInitiator::logException(char const *function) noexcept {
    try {
        IPC_LOG_ERR("Threw an exception in function %s", function);
    } catch (...) {
        // Called from handlers of exceptions, which have nothing left to do but to go on.
    }
}
