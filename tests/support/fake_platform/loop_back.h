// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_LOOP_BACK_H
#define KORVO_TESTS_FAKE_PLATFORM_LOOP_BACK_H

// The messaging handles of the fake, and how messages go between those of one process.

#include <array>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "fake_platform/fake_platform.h"

namespace fake_platform {

using ResponseEntry = void (*)(char **, char **, char **, char **, void *);
using EventEntry = void (*)(char **, char **, char **, void *);
using CommandEntry = void (*)(char **, char **, char **, void *);

/// A message as texts in the order of the functions that carry it.
using Message = std::vector<Text>;

/// An entry point with its context.
template <typename Entry>
struct Registration {
    Entry entry = nullptr;
    void *context = nullptr;
};

struct Handle {
    bool is_target = false;
    std::string address;

    // Initiators. A response goes to the object whose request it answers, when that object said that the command
    // is asynchronous; or, where objects are not asked, when it registered on the same thread before it sent. A
    // request without an object is answered through the last registration.
    std::list<Registration<ResponseEntry>> response_entries;
    std::set<std::pair<std::thread::id, void *>> asked;
    std::map<std::string, void *> asynchronous_requests;
    Registration<EventEntry> event_entry;
    std::set<std::string> subscriptions;
    std::list<Message> responses;

    // Targets.
    std::string service;
    std::string target;
    Registration<CommandEntry> command_entry;
    std::list<Message> commands;

    // Calls of entry points: those that wait for the handle's thread, and those that run and that closing
    // waits for.
    std::list<std::function<void()>> deliveries;
    int running = 0;
    bool has_thread = false;
    bool closed = false;
};

/// Handles and messages; one for the whole process.
class LoopBack {
  public:
    static LoopBack &instance();

    /// NULL when there is such a target already.
    void *open(Handle const &handle);
    korvo_core_status close(void *messaging);
    std::size_t count();

    korvo_core_status registerResponseEntry(void *initiator, Registration<ResponseEntry> const &registration);
    korvo_core_status registerEventEntry(void *initiator, Registration<EventEntry> const &registration);
    korvo_core_status registerCommandEntry(void *target, Registration<CommandEntry> const &registration);
    korvo_core_status subscribe(void *initiator, Text const &service, bool wanted);

    /// @param object  the client object that sends, or NULL.
    /// @param said    whether the object said that the command is asynchronous; empty when it was not asked.
    korvo_core_status sendCommand(void *initiator, void *object, std::optional<bool> said,
                                  Text const &service, Text const &target, Text const &request_id,
                                  Text const &command);
    korvo_core_status sendResponse(void *target, Text const &source, Text const &request_id,
                                   Text const &response);
    korvo_core_status sendEvent(void *target, Text const &event);

    /// Waits for the first response that `wanted` accepts; status 4 when the time is up or the handle is
    /// closed.
    korvo_core_status receiveResponse(void *initiator, int timeout,
                                      std::function<bool(Message const &)> const &wanted, Message &response);
    korvo_core_status receiveCommand(void *target, int timeout, Message &command);

    /// Calls an entry point of an initiator on the calling thread: the one with this context, or else the one
    /// that was registered last. False when there is none.
    bool callResponseEntry(Message const &response, void *context);
    bool callEventEntry(Message const &event, void *context);
    bool hasResponseEntry();
    bool hasEventEntry();

  private:
    using Lock = std::unique_lock<std::mutex>;
    using HandlePointer = std::shared_ptr<Handle>;

    HandlePointer find(void *messaging);
    HandlePointer findTarget(std::string const &service, std::string const &target);
    HandlePointer findInitiator(std::string const &address);
    Registration<ResponseEntry> responseEntry(void *context, HandlePointer &owner);
    Registration<EventEntry> eventEntry(void *context, HandlePointer &owner);
    korvo_core_status receive(void *messaging, int timeout, std::list<Message> Handle::*queue,
                              std::function<bool(Message const &)> const &wanted, Message &message);
    void call(Lock &lock, HandlePointer const &handle, std::function<void()> const &entry);
    void callOnOwnThread(HandlePointer const &handle, std::function<void()> const &entry);
    void run(HandlePointer const &handle);
    void deliverCommands(HandlePointer const &target);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::list<HandlePointer> handles_;
    unsigned int opened_ = 0;
};

/// Stores copies in a caller's out-pointers.
void handOut(Message const &message, std::initializer_list<char **> outs);

}  // namespace fake_platform

#endif
