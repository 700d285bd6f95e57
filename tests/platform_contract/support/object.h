// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_OBJECT_H
#define KORVO_TESTS_PLATFORM_OBJECT_H

#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "frame/interfaces.h"
#include "support/mailbox.h"

/// A client object of the simplest kind: it notes what is dispatched to it.
class Object : public korvoInitiatorInterfaces {
  public:
    struct Response {
        std::string method;
        std::string target;
        std::string request_id;
        json::Object response;
    };

    struct Event {
        std::string source;
        std::string name;
        json::Object payload;
    };

    /// With a messaging handle of its own, or sharing the given one.
    explicit Object(void *messaging = nullptr);
    ~Object() override;

    void subclassResponseDispatch(char const *method, char *target, char *request_id,
                                  json::Object &response) override;
    void subclassEventDispatch(char const *source, char const *event, json::Object &payload) override;
    bool isAsynchronous(char const *method, char const *request_id) override;

    /// Sends the command {"command": method, "number": number} under the given identifier.
    korvo_core_status send(char const *request_id, char const *method, double number = 0);
    korvo_core_status receive(char const *request_id, char const *method, json::Object &response,
                              int timeout = 20000);
    /// Both, with a fresh identifier.
    korvo_core_status exchange(char const *method, double number, json::Object &response);
    /// Sends so that the response goes to subclassResponseDispatch().
    void registerForResponses();
    korvo_core_status sendAsync(char const *request_id, char const *method, double number = 0);
    void collectEvents();

    Mailbox<Response> responses;
    Mailbox<Event> events;
    /// Called at each dispatched response, before it is noted.
    void (*at_response)(Object &object) = nullptr;

  private:
    std::mutex mutex_;
    /// Identifiers of the asynchronous commands.
    std::set<std::string> asynchronous_;

    static void takeResponse(char **service, char **target, char **request_id, char **response,
                             void *context);
    static void takeEvent(char **service, char **source, char **event, void *context);
};

/// The number in a member; nothing when it is absent or no number.
std::optional<double> numberIn(json::Object const &object, char const *name);

#endif
