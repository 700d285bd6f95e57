// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_INTERFACES_H
#define KORVO_FRAME_INTERFACES_H

// The base classes of every service client. Fields and virtual slots stand in the order that the platform's
// libkorvo-interfaces was built with; new virtual functions go last.
//
// Construction, destruction, logging and identifiers are part of the client library. The message plumbing
// (basicSendCommand, basicReceiveResponse and the two entries for incoming messages) is defined by
// libkorvo-interfaces.

#include <list>
#include <map>
#include <string>

#include "frame/uuid_generator.h"
#include "json/json.h"
#include "json/lists.h"
#include "korvo_core.h"

class KORVO_CORE_EXPORT korvoInterfaces {
  public:
    korvoInterfaces(void *logging_handle, unsigned int major, unsigned int minor);
    virtual ~korvoInterfaces();

    korvoInterfaces(korvoInterfaces const &) = delete;
    korvoInterfaces &operator=(korvoInterfaces const &) = delete;

    /// A new random (version 4) UUID text of 36 characters, freed with free(). Takes no lock; threads may call it
    /// at the same time. Throws when memory or entropy cannot be had.
    char *generateUUID();

    /// Log a line at priority 3 (error) or 4 (warning) through the object's logging handle.
    void IPC_LOG_ERR(char const *format, ...) KORVO_CORE_PRINTF(2, 3);
    void IPC_LOG_WARNING(char const *format, ...) KORVO_CORE_PRINTF(2, 3);

    /// The interface version of this side.
    unsigned int majorVersion() const { return major_version_; }
    unsigned int minorVersion() const { return minor_version_; }

  protected:
    void *logging_handle_;
    unsigned int major_version_;
    unsigned int minor_version_;
    UuidGenerator uuid_generator_;
};

class KORVO_CORE_EXPORT korvoInitiatorInterfaces : public korvoInterfaces {
  public:
    /// @param messaging_handle  a messaging handle to share, which the creator keeps open as long as the object
    ///                          lives; or NULL, and the object opens one of its own under `initiator_name`.
    /// @param count             the bound that the shared messaging code gets for its bookkeeping.
    /// Throws std::runtime_error, after logging its text, when no messaging handle can be opened.
    korvoInitiatorInterfaces(void *messaging_handle, void *logging_handle, unsigned int major,
                             unsigned int minor, char const *initiator_name, unsigned int count);

    /// Closes the messaging handle if the object opened it; a failure is only logged.
    ~korvoInitiatorInterfaces() override;

    /// Called with each response that came in through initiatorResponseCallback(). Does nothing here.
    virtual void subclassResponseDispatch(char const *method, char *target, char *request_id,
                                          json::Object &response);

    /// Called with each event that came in through initiatorCallback(). Does nothing here.
    virtual void subclassEventDispatch(char const *source, char const *event, json::Object &payload);

    /// Sends a command. Never waits for the answer.
    korvo_core_status basicSendCommand(char const *service, char const *target, char const *request_id,
                                       json::Object const &command);

    /// Waits for the response to `request_id`, at most `timeout` milliseconds: 0 polls, a negative time-out waits
    /// without limit. Fills `response` when it returns 0, and only then.
    korvo_core_status basicReceiveResponse(int timeout, char const *service, char const *target,
                                           char const *request_id, char const *method,
                                           json::Object &response);

    /// Takes a response from the messaging layer: service, target, request identifier and JSON text.
    void initiatorResponseCallback(char **service, char **target, char **request_id, char **response);

    /// Takes an event from the messaging layer: service, source and JSON text.
    void initiatorCallback(char **service, char **source, char **event);

    void *messagingHandle() const { return messaging_handle_; }

    /// Whether the command that basicSendCommand() is just sending is asynchronous: its response then goes to
    /// initiatorResponseCallback() and is not kept for a receive. A libkorvo-interfaces that has to know calls this
    /// on the thread that sends; one that tells the two apart by other means never does. The object may hold locks
    /// of its own meanwhile, so this takes none. False here.
    /// @param method      the command's name; may be NULL, as `request_id` may.
    virtual bool isAsynchronous(char const *method, char const *request_id);

  protected:
    /// Closes the messaging handle now if the object opened it, so that no message arrives any more. A derived
    /// class whose members incoming messages use calls this at the beginning of its destructor. Never throws.
    void closeOwnedMessaging() noexcept;

  private:
    /// State of the shared messaging code; the client library only makes and destroys it.
    struct Bookkeeping {
        Bookkeeping(void *logging, unsigned int limit) : logging_handle(logging), count(limit) {}

        void *logging_handle;
        unsigned int count;
        std::map<std::string, std::string> entries;
        std::list<std::string> order;
    };

  protected:
    void *messaging_handle_;
    bool owns_messaging_handle_;
    Bookkeeping commands_;
    Bookkeeping responses_;
};

#endif
