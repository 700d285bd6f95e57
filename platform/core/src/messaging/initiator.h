// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_INITIATOR_H
#define KORVO_PLATFORM_INITIATOR_H

// The client side of the messaging.
//
// Who reads. No thread stands between a caller and its socket: the thread that waits for a response reads the
// socket itself. Each connection has one reader role. Of several threads that wait on a connection one has
// it; it hands each response to the thread that waits for it, keeps what nobody waits for, and when it leaves
// it wakes another waiting thread, which takes the role. While a callback is registered there is a messaging
// thread too, which reads every connection whose role is free, and makes the callbacks. It has no role and no
// lock during a callback, so a callback may call the core again and read for itself.
//
// How the messaging thread waits. Its epoll set holds all connections. A thread that takes a reader role
// switches that connection's interest off, and on again when it leaves; since epoll looks at the level,
// nothing is missed.
//
// Locks. One mutex guards all bookkeeping and is never held during a system call that could wait. Each
// connection's send mutex is held while a frame is written. Order: connect mutex, send mutex, mutex; a sender
// that finds the socket full reads meanwhile, so that it never waits for somebody who waits for it.

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/notes.h"
#include "korvo_core.h"
#include "messaging/addressing.h"
#include "messaging/callback_fence.h"
#include "messaging/connection.h"
#include "messaging/deliveries.h"
#include "messaging/epoll.h"
#include "messaging/failure_log.h"
#include "messaging/folder_watch.h"
#include "messaging/messaging.h"
#include "messaging/requests.h"

namespace platform {

class Initiator final : public Messaging, public std::enable_shared_from_this<Initiator> {
  public:
    using ResponseCallback = void (*)(char **, char **, char **, char **, void *);
    using EventCallback = void (*)(char **, char **, char **, void *);

    struct Response {
        Text service;
        Text target;
        Text request_id;
        Text response;
    };

    Initiator(void *logging, std::string name, RuntimeFolder folder);

    /// Whom the response to a command is for.
    struct Purpose {
        Route route = Route::anyone;
        void const *owner = nullptr;
        /// With Route::owner_callback: what the callback gets when no response can come.
        std::string_view substitute = {};
    };
    /// Takes a command. With status 0 a call for an owner's callback is promised an end; with any other nothing is called.
    korvo_core_status send(std::string_view service, std::string_view target, std::string_view request_id,
                           std::string_view command, Purpose const &purpose);

    korvo_core_status receive(std::string_view request_id, int timeout, Text &response);
    korvo_core_status receiveAny(int timeout, Response &response);

    korvo_core_status setResponseCallback(ResponseCallback callback, void *context);
    korvo_core_status setEventCallback(EventCallback callback, void *context);

    korvo_core_status subscribe(std::string_view service);
    korvo_core_status unsubscribe(std::string_view service);

    void close() override;
    Initiator *asInitiator() override { return this; }

  private:
    class ReaderRole;
    class RegisteredWaiter;
    enum class ReadResult { some, nothing, lost };
    enum class WriteResult { whole, blocked, failed };

    template <typename Callback>
    struct Registration {
        Callback callback;
        void *context;
    };

    /// A subscription whose connection is gone.
    struct LostSubscription {
        std::string service;
        Clock::time_point since;
        /// When to try again without being told that the service is back.
        Clock::time_point due;
    };

    using ConnectionPointer = std::shared_ptr<Connection>;

    // initiator_connecting.cpp
    ConnectionPointer findConnection(Address const &address);
    ConnectionPointer findConnection(std::string_view socket_name);
    ConnectionPointer findConnection(std::uint64_t serial);
    // With status 4 `problem` says why.
    korvo_core_status connect(Address const &address, ConnectionPointer &connection, std::string &problem);
    korvo_core_status connectByName(std::string const &socket_name, std::shared_ptr<Address const> address,
                                    bool knows_target, ConnectionPointer &connection, std::string &problem);
    process::Descriptor openSocket(std::string const &socket_name, Address const &address,
                                   korvo_core_status &status, std::string &problem);
    void watch(Connection &connection, bool wanted);
    void updateInterest(Connection &connection);
    void lose(Hold &hold, Connection &connection, char const *reason);
    void adoptSubscription(Hold &hold, Connection &connection);

    // initiator_sending.cpp
    korvo_core_status connectionTo(Hold &hold, Address const &address, ConnectionPointer &connection);
    korvo_core_status track(Hold &hold, Connection &connection, std::string_view request_id,
                            Purpose const &purpose, Request *&request);
    bool mayGather(Connection const &connection, Route route) const;
    WriteResult write(Hold &hold, Connection &connection);
    void finishWriting(Hold &hold, Connection &connection, WriteResult written);
    void requireThread(Hold &hold, Connection &connection);
    void arrangeWriting(Hold &hold, Connection &connection);
    void writeAll(Hold &hold, Connection &connection);
    void writeGathered(Hold &hold);
    void writeBlocked(Hold &hold, Connection &connection);
    void writeControl(Hold &hold, Connection &connection, frame::Type type);
    void writeLast(Hold &hold);
    void end(Request &request);
    korvo_core_status fail(Hold &hold, Phase phase, Address const *peer, std::string_view reason);

    // initiator_reading.cpp
    ReadResult read(Hold &hold, Connection &connection, int flags);
    ReadResult writeAndRead(Hold &hold, Connection &connection, int timeout);
    void readForReceivers(Hold &hold, Deadline const &deadline);
    void route(Hold &hold, Connection &connection, frame::Frame const &frame);
    void routeResponse(Hold &hold, Connection &connection, frame::Frame const &frame);
    void routeEvent(Hold &hold, Connection &connection, frame::Frame const &frame);
    void keep(Hold &hold, Request &request, Text response);
    void queueResponse(Hold &hold, Delivery response, Text substitute);
    static void setReceiveTimeout(Connection &connection, int timeout);

    // initiator_delivering.cpp
    bool hasCallbacks() const { return !response_callbacks_.empty() || !event_callbacks_.empty(); }
    bool hasWork() const { return hasCallbacks() || blocked_ != 0; }
    void startThread(Hold &hold);
    void stopPolling();
    void watchFolder();
    void run();
    void deliver(Hold &hold);
    void callResponse(Hold &hold, Delivery delivery);
    void callEvent(Hold &hold, Delivery const &delivery);
    template <typename Callback>
    void call(Hold &hold, void *context, Callback callback);
    void handleEpollEvent(Hold &hold, std::uint64_t tag, unsigned int events);
    void wakeThread();
    void wakeReceivers();
    void waitForCallback(Hold &hold, void const *context);
    bool onMessagingThread() const { return is_running_ && std::this_thread::get_id() == thread_id_; }

    // initiator_subscribing.cpp
    bool startWatch(bool anew);
    void scan(std::string const &service);
    void attach(std::string const &service, std::string const &socket_name);
    void handleFolderChange(Hold &hold);
    void restoreSubscriptions(Hold &hold);
    int restoreTimeout() const;

    Log const log_;
    std::string const name_;
    RuntimeFolder const folder_;
    unsigned int const generation_ = process::generation();

    /// Held while a connection is made, so that two threads do not make the same one.
    std::mutex connect_mutex_;

    std::mutex mutex_;
    // All below are guarded by mutex_.
    bool is_closing_ = false;
    std::vector<ConnectionPointer> connections_;
    std::uint64_t next_serial_ = 16;
    RequestTable requests_;
    DropCounter dropped_kept_;
    DropCounter dropped_unknown_;

    /// One per context, in the order in which the contexts came; responses for anyone go to the last
    /// registered.
    std::vector<Registration<ResponseCallback>> response_callbacks_;
    void *last_response_context_ = nullptr;
    std::vector<Registration<EventCallback>> event_callbacks_;
    Deliveries deliveries_;
    DropCounter dropped_responses_;
    DropCounter dropped_events_;
    DropCounter dropped_requests_;
    FailureLog failures_;
    /// Connections whose socket was full.
    unsigned int blocked_ = 0;
    /// Since when commands from inside callbacks gather.
    bool is_gathering_ = false;
    Clock::time_point gathering_since_{};

    std::thread thread_;
    std::thread::id thread_id_;
    bool is_running_ = false;
    /// The messaging thread is in epoll_wait(), or about to be, and nobody has woken it.
    bool is_asleep_ = false;
    Epoll epoll_;
    process::Descriptor wake_;
    CallbackFence fence_;

    /// Threads in receiveAny(): one of them reads for all.
    std::condition_variable receivers_;
    bool receivers_have_reader_ = false;
    unsigned int receiver_losses_ = 0;
    process::Descriptor receivers_wake_;

    FolderWatch watch_;
    std::set<std::string> subscriptions_;
    std::map<std::string, LostSubscription> lost_subscriptions_;
};

}  // namespace platform

#endif
