// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_ENDS_H
#define KORVO_TESTS_PLATFORM_ENDS_H

// The two ends of a conversation, on the plain C interface of the core.

#include <functional>
#include <memory>
#include <string>

#include "korvo_core.h"
#include "support/mailbox.h"

struct Command {
    std::string source;
    std::string request_id;
    std::string command;
};

struct Response {
    std::string service;
    std::string target;
    std::string request_id;
    std::string response;
};

struct Event {
    std::string service;
    std::string source;
    std::string event;
};

bool operator==(Command const &left, Command const &right);
bool operator==(Response const &left, Response const &right);
bool operator==(Event const &left, Event const &right);

/// A logging handle; NULL in spirit, but as programs have it.
class Logging {
  public:
    Logging();
    ~Logging();
    Logging(Logging const &) = delete;
    Logging &operator=(Logging const &) = delete;

    void *handle() const { return handle_; }

  private:
    void *handle_ = nullptr;
};

/// An open service. Commands are polled for, or go to a function while answerWith() is in force.
class Service {
  public:
    /// Gives a response to a command, or an empty text for none.
    using Answer = std::function<std::string(Command const &)>;

    explicit Service(char const *service = "sample", char const *target = "");
    ~Service();
    Service(Service const &) = delete;
    Service &operator=(Service const &) = delete;

    void *handle() const { return handle_; }
    void close();

    void answerWith(Answer answer);
    korvo_core_status poll(Command &command, unsigned int timeout = 20000);
    korvo_core_status respond(Command const &command, std::string const &response);
    korvo_core_status publish(std::string const &event);

  private:
    static void take(char **source, char **request_id, char **command, void *context);

    Logging logging_;
    void *handle_ = nullptr;
    Answer answer_;
};

/// An open initiator.
class Client {
  public:
    Client();
    ~Client();
    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    void *handle() const { return handle_; }
    void close();

    korvo_core_status send(char const *request_id, char const *command, char const *service = "sample",
                           char const *target = "");
    korvo_core_status receive(Response &response, int timeout = 20000);

    /// From now on responses and events arrive in the mailboxes.
    void collectResponses();
    void collectEvents();
    korvo_core_status subscribe(char const *service = "sample");

    Mailbox<Response> responses;
    Mailbox<Event> events;

  private:
    static void takeResponse(char **service, char **target, char **request_id, char **response,
                             void *context);
    static void takeEvent(char **service, char **source, char **event, void *context);

    Logging logging_;
    void *handle_ = nullptr;
};

/// Publishes `event` until the client has got one, since a service may learn of a subscription a little later
/// than the subscriber; gives that one.
std::optional<Event> publishUntilReceived(Service &service, Client &client, std::string const &event);

#endif
