// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_INITIATOR_H
#define KORVO_FRAME_INITIATOR_H

// The object behind a client handle.
//
// Locks: one mutex per method guards the method's registry, one guards the event handlers; never two at once.
// User callbacks run under their method's mutex, event handlers under the handlers' mutex. A call from there that
// would lock the same mutex throws the lock error, which the exported functions turn into a status or a log line.

#include <unistd.h>

#include <atomic>
#include <initializer_list>
#include <list>
#include <map>
#include <string_view>
#include <thread>
#include <utility>

#include "frame/callback_registry.h"
#include "frame/function_ref.h"
#include "frame/interfaces.h"
#include "frame/values.h"
#include "korvo_api_action_engine.h"
#include "operations/operation.h"

class IAction_engineInitiator : public korvoInitiatorInterfaces {
  public:
    using EventHandler = korvo_api_action_engine_action_completed_event_callback_func_ptr;

    /// Calls a method's callback, whose signature it knows, with the results of a response.
    using Deliver = void (*)(AnyCallback callback, char *target, korvo_core_status status,
                             Result const *results, void *context);

    /// Throws, after logging the reason, when messaging cannot be opened or events cannot be subscribed to.
    IAction_engineInitiator(void *messaging_handle, void *logging_handle, unsigned char subscribe_events,
                            char const *initiator_name);

    /// Waits until the calls that are inside the object have left. Those that wait for a response leave early where
    /// the object owns its messaging handle and the platform ends them when that is closed, which comes first. Callbacks
    /// are waited for by the closing alone.
    ~IAction_engineInitiator() override;

    /// Counts one call on the object for as long as it lives; the last thing of the object that a call touches.
    class Visit {
      public:
        explicit Visit(IAction_engineInitiator &initiator) noexcept : initiator_(initiator) {
            initiator_.visits_.fetch_add(1, std::memory_order_relaxed);
        }
        ~Visit() { initiator_.visits_.fetch_sub(1, std::memory_order_release); }

        Visit(Visit const &) = delete;
        Visit &operator=(Visit const &) = delete;

        /// Whether the object's destructor has begun: whatever a call meets now ends in status 4.
        bool isEnding() const noexcept { return initiator_.is_ending_.load(std::memory_order_relaxed); }

      private:
        IAction_engineInitiator &initiator_;
    };

    /// Stands for a message that the messaging layer is just delivering to the object on this thread, which it does with
    /// one at a time.
    class Delivery {
      public:
        explicit Delivery(IAction_engineInitiator &initiator) noexcept
            : initiator_(initiator),
              before_(initiator.delivering_.exchange(std::this_thread::get_id(), std::memory_order_relaxed)) {
        }
        ~Delivery() { initiator_.delivering_.store(before_, std::memory_order_relaxed); }

        Delivery(Delivery const &) = delete;
        Delivery &operator=(Delivery const &) = delete;

      private:
        IAction_engineInitiator &initiator_;
        std::thread::id const before_;
    };

    /// Whether the caller is inside a callback of the object. If so that is logged: `function` does nothing then.
    bool refusesInCallback(char const *function) noexcept;

    void subclassResponseDispatch(char const *method, char *target, char *request_id,
                                  json::Object &response) override;
    void subclassEventDispatch(char const *source, char const *event, json::Object &payload) override;

    /// True while one of the _send_async forms sends, and only on its own thread: the identifier is registered and the
    /// registry's mutex held. Nothing is noted anywhere, so a form that ends before it sends leaves nothing behind.
    bool isAsynchronous(char const *method, char const *request_id) override;

    void initializeMethodStructures();
    void initializeEventStructures(unsigned char subscribe_events);

    // Three members per operation: the request builder, which returns 1 after a warning when a text or list is
    // NULL; the synchronous reader, which frees the request identifier when it returns 0, and only then; and the
    // reader of asynchronous responses, which never throws.

#define INPUT(kind, member) , operations::InputOf<operations::Kind::kind> member
#define OUT_POINTER(kind, member) , operations::OutPointerOf<operations::Kind::kind> member
#define OPERATION(op, Method, INPUTS, RESULTS)                                                               \
    korvo_core_status action_engine_##op##_utility_send(char const *target, char *request_id INPUTS(INPUT)); \
    korvo_core_status action_engine_##op##_receive(char const *target, int timeout,                          \
                                                   void *request_id RESULTS(OUT_POINTER));                   \
    void action_engine##Method##Callback(char *target, char *request_id, json::Object const &response);
#define NO_INPUTS(INPUT)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) OPERATION(op, Method, NO_INPUTS, RESULTS)
#include "operations/operations.def"
#undef NO_INPUTS
#undef OUT_POINTER
#undef INPUT

    void action_engineAction_completed(char const *source, json::Object const &payload);

    // A change that cannot be made, because a handler makes it or memory is short, is logged under the name of the
    // exported function.
    void registerEventHandler(EventHandler handler, void *context) noexcept;
    void unregisterEventHandler(EventHandler handler) noexcept;
    void unregisterEventHandler(EventHandler handler, void *context) noexcept;

  private:
    using ResponseMember = void (IAction_engineInitiator::*)(char *target, char *request_id,
                                                             json::Object const &response);
    using EventHandlers = std::list<std::pair<EventHandler, void *>>;
    using EventMember = void (IAction_engineInitiator::*)(char const *source, json::Object const &payload);

    korvo_core_status sendCommand(operations::Operation const &operation, char const *target,
                                  char const *request_id, std::initializer_list<Input> inputs);
    korvo_core_status receiveResponse(operations::Operation const &operation, char const *target, int timeout,
                                      void *request_id, std::initializer_list<OutPointer> outs);
    /// The same without freeing the identifier.
    korvo_core_status readResponse(operations::Operation const &operation, char const *target, int timeout,
                                   void const *request_id, std::initializer_list<OutPointer> outs);
    void handleResponse(operations::Operation const &operation, AnyCallbackRegistry &registry, char *target,
                        char *request_id, json::Object const &response, Deliver deliver) noexcept;
    void deliverResponse(operations::Operation const &operation, AnyCallbackRegistry &registry, char *target,
                         char *request_id, json::Object const &response, Deliver deliver);
    void changeEventHandlers(char const *function, FunctionRef<void(EventHandlers &)> change) noexcept;
    void logException(char const *function) noexcept;
    void reportVersionMismatch(unsigned int target_major, unsigned int target_minor);

    struct Method {
        ResponseMember respond;
        AnyCallbackRegistry *registry;
    };

    /// Nearly always the lengths decide.
    struct ByLength {
        bool operator()(std::string_view left, std::string_view right) const {
            return left.size() != right.size() ? left.size() < right.size() : left < right;
        }
    };

    std::map<std::string_view, Method, ByLength> methods_;

  public:
    // Each registry with its mutex; the exported forms insert and cancel.
#define OPERATION(op, Method, INPUTS, RESULTS) \
    CallbackRegistry<korvo_api_action_engine_##op##_method_callback_func_ptr> op##_callbacks;
#define VERSION_QUERY OPERATION
#include "operations/operations.def"

  private:
    std::map<std::string_view, EventMember> events_;
    EventHandlers event_handlers_ KORVO_GUARDED_BY(event_handlers_mutex_);
    /// Who subscribes to events has a place for one handler, whatever memory there is when it comes. Touched where the handlers
    /// are changed, under their mutex.
    EventHandlers spare_event_handler_;
    Mutex event_handlers_mutex_;

    // Visits of threads that a child process does not have are not waited for there.
    pid_t const process_ = getpid();
    std::atomic<unsigned int> visits_{0};
    std::atomic<bool> is_ending_{false};
    std::atomic<std::thread::id> delivering_{std::thread::id()};
};

#endif
