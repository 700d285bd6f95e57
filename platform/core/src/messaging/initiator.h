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
// Who writes: initiator_sending.cpp and initiator_writing.cpp.
//
// Locks. One mutex guards all bookkeeping, that of the connections too, and is never held during a system call that
// could wait, or during a callback. Order: connect mutex, mutex.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/mutex.h"
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

    struct Subscription {
        /// When to look for the service's sockets without being told that there is a new one.
        Clock::time_point due = Clock::time_point::max();
        /// What is added to a time of failure; doubled by each that follows another.
        std::chrono::milliseconds pause = limits::reconnect_pause;
    };

    /// A subscription whose connection is gone.
    struct LostSubscription {
        std::string service;
        Clock::time_point since;
    };

    using ConnectionPointer = std::shared_ptr<Connection>;

    // initiator_connecting.cpp
    ConnectionPointer findConnection(Address const &address) KORVO_REQUIRES(mutex_);
    ConnectionPointer findConnection(std::string_view socket_name) KORVO_REQUIRES(mutex_);
    ConnectionPointer findConnection(std::uint64_t serial) KORVO_REQUIRES(mutex_);
    /// The one with the next higher serial number, or NULL: for walks during which connections come and go.
    ConnectionPointer connectionAfter(std::uint64_t serial) const KORVO_REQUIRES(mutex_);
    // With status 4 `problem` says why.
    korvo_core_status connect(Address const &address, ConnectionPointer &connection, std::string &problem)
        KORVO_EXCLUDES(mutex_);
    korvo_core_status connectByName(std::string const &socket_name, std::shared_ptr<Address const> address,
                                    bool knows_target, ConnectionPointer &connection, std::string &problem)
        KORVO_EXCLUDES(mutex_);
    process::Descriptor openSocket(std::string const &socket_name, Address const &address,
                                   korvo_core_status &status, std::string &problem);
    /// False, with errno, when the messaging thread cannot watch it.
    bool watch(Connection &connection) KORVO_REQUIRES(mutex_);
    void updateInterest(Hold &hold, Connection &connection) KORVO_REQUIRES(mutex_);
    /// Nothing here needs memory: whatever waits for the connection is told, whenever it ends.
    void lose(Hold &hold, Connection &connection, char const *reason) noexcept KORVO_REQUIRES(mutex_);
    void adoptSubscription(Hold &hold, Connection &connection) KORVO_REQUIRES(mutex_);

    // initiator_sending.cpp
    korvo_core_status connectionTo(Hold &hold, Address const &address, ConnectionPointer &connection)
        KORVO_REQUIRES(mutex_);
    korvo_core_status track(Hold &hold, Connection &connection, std::string_view request_id,
                            Purpose const &purpose, Request *&request) KORVO_REQUIRES(mutex_);
    bool mayGather(Connection const &connection, Route route) const KORVO_REQUIRES(mutex_);
    /// Returns false where nobody would write what has gathered.
    bool arrangeWriting(Hold &hold) KORVO_REQUIRES(mutex_);
    void end(Request &request) noexcept KORVO_REQUIRES(mutex_);
    korvo_core_status fail(Hold &hold, Phase phase, Address const *peer, std::string_view reason)
        KORVO_REQUIRES(mutex_);

    // initiator_writing.cpp
    ConnectionPointer findGathered() KORVO_REQUIRES(mutex_);
    WriteResult write(Hold &hold, Connection &connection) KORVO_REQUIRES(mutex_);
    void finishWriting(Hold &hold, Connection &connection, WriteResult written) KORVO_REQUIRES(mutex_);
    /// Returns whether there was anything; then the mutex was free meanwhile.
    bool writeGathered(Hold &hold) KORVO_REQUIRES(mutex_);
    void writeAll(Hold &hold, Connection &connection) KORVO_REQUIRES(mutex_);
    void writeBlocked(Hold &hold, Connection &connection) KORVO_REQUIRES(mutex_);
    void writeControl(Hold &hold, Connection &connection, frame::Type type) KORVO_REQUIRES(mutex_);
    void writeLast(Hold &hold) KORVO_REQUIRES(mutex_);
    void waitForRoom(Hold &hold, Connection &connection) KORVO_REQUIRES(mutex_);
    void stopWaitingForRoom(Connection &connection) KORVO_REQUIRES(mutex_);
    /// Returns false where there is no such thread and none can be started.
    bool wakeWriter(Hold &hold) KORVO_REQUIRES(mutex_);
    /// Where there is one.
    void nudgeWriter() KORVO_REQUIRES(mutex_);
    void runWriter() KORVO_EXCLUDES(mutex_);
    void waitToWrite(Hold &hold) KORVO_REQUIRES(mutex_);
    bool hasWorkForWriter() const KORVO_REQUIRES(mutex_) { return hasCallbacks() || blocked_ != 0; }

    // initiator_reading.cpp
    // Called with the mutex free; returns with it held.
    ReadResult read(Hold &hold, Connection &connection, int flags) KORVO_ACQUIRE(mutex_);
    ReadResult writeAndRead(Hold &hold, Connection &connection, int timeout) KORVO_REQUIRES(mutex_);
    void readForReceivers(Hold &hold, Deadline const &deadline) KORVO_REQUIRES(mutex_);
    void route(Hold &hold, Connection &connection, frame::Frame const &frame) KORVO_REQUIRES(mutex_);
    void routeResponse(Hold &hold, Connection &connection, frame::Frame const &frame) KORVO_REQUIRES(mutex_);
    void routeEvent(Hold &hold, Connection &connection, frame::Frame const &frame) KORVO_REQUIRES(mutex_);
    void keep(Hold &hold, Request &request, Text response) KORVO_REQUIRES(mutex_);
    void queueResponse(Hold &hold, DeliveryPlace response, Text substitute) KORVO_REQUIRES(mutex_);
    void loseKept(Hold &hold, Request &request) KORVO_REQUIRES(mutex_);
    void loseEvent(Hold &hold, char const *reason) KORVO_REQUIRES(mutex_);
    /// Where a response to the request will wait for its callback.
    static DeliveryPlace placeFor(Request const &request);
    /// False when the socket does not take it.
    static bool setReceiveTimeout(Connection &connection, int timeout);

    // initiator_delivering.cpp
    bool hasCallbacks() const KORVO_REQUIRES(mutex_) {
        return !response_callbacks_.empty() || !event_callbacks_.empty();
    }
    void startThread(Hold &hold) KORVO_REQUIRES(mutex_);
    void stopPolling() KORVO_REQUIRES(mutex_);
    bool listenTo(FolderWatch const &watch) KORVO_REQUIRES(mutex_);
    void run() KORVO_EXCLUDES(mutex_);
    void deliver(Hold &hold) KORVO_REQUIRES(mutex_);
    void callResponse(Hold &hold, Delivery delivery) KORVO_REQUIRES(mutex_);
    void callEvent(Hold &hold, Delivery const &delivery) KORVO_REQUIRES(mutex_);
    template <typename Callback>
    void call(Hold &hold, void *context, Callback callback) KORVO_REQUIRES(mutex_);
    void handleEpollEvent(Hold &hold, std::uint64_t tag) KORVO_REQUIRES(mutex_);
    void wakeThread() KORVO_REQUIRES(mutex_);
    void wakeReceivers() KORVO_REQUIRES(mutex_);
    void waitForCallback(Hold &hold, void const *context) KORVO_REQUIRES(mutex_);
    bool onMessagingThread() const KORVO_REQUIRES(mutex_) {
        return is_running_ && std::this_thread::get_id() == thread_id_;
    }

    // initiator_subscribing.cpp
    bool isWatching() const KORVO_REQUIRES(mutex_) { return watch_.descriptor() >= 0 && !watch_is_over_; }
    bool startWatch() KORVO_EXCLUDES(mutex_);
    void scan(std::string const &service) noexcept KORVO_EXCLUDES(mutex_);
    /// False when it failed for a reason that may pass.
    bool attach(std::string const &service, std::string const &socket_name) KORVO_EXCLUDES(mutex_);
    void scanLater(std::string_view service) KORVO_REQUIRES(mutex_);
    void handleFolderChange(Hold &hold) KORVO_REQUIRES(mutex_);
    void restoreSubscriptions(Hold &hold) KORVO_REQUIRES(mutex_);
    int restoreTimeout() const KORVO_REQUIRES(mutex_);

    Log const log_;
    std::string const name_;
    RuntimeFolder const folder_;
    unsigned int const generation_ = process::generation();

    /// Held while a connection is made, so that two threads do not make the same one.
    std::mutex connect_mutex_;

    Mutex mutex_;
    bool is_closing_ KORVO_GUARDED_BY(mutex_) = false;
    std::vector<ConnectionPointer> connections_ KORVO_GUARDED_BY(mutex_);
    std::uint64_t next_serial_ KORVO_GUARDED_BY(mutex_) = 16;
    RequestTable requests_ KORVO_GUARDED_BY(mutex_);
    DropCounter dropped_kept_ KORVO_GUARDED_BY(mutex_);
    DropCounter dropped_unknown_ KORVO_GUARDED_BY(mutex_);

    /// One per context, in the order in which the contexts came; responses for anyone go to the last
    /// registered.
    std::vector<Registration<ResponseCallback>> response_callbacks_ KORVO_GUARDED_BY(mutex_);
    void *last_response_context_ KORVO_GUARDED_BY(mutex_) = nullptr;
    std::vector<Registration<EventCallback>> event_callbacks_ KORVO_GUARDED_BY(mutex_);
    Deliveries deliveries_ KORVO_GUARDED_BY(mutex_);
    DropCounter dropped_responses_ KORVO_GUARDED_BY(mutex_);
    DropCounter dropped_events_ KORVO_GUARDED_BY(mutex_);
    DropCounter dropped_requests_ KORVO_GUARDED_BY(mutex_);
    DropCounter pauses_ KORVO_GUARDED_BY(mutex_);
    FailureLog failures_ KORVO_GUARDED_BY(mutex_);
    /// Connections whose socket was full.
    unsigned int blocked_ KORVO_GUARDED_BY(mutex_) = 0;

    /// The writing thread; asleep while it is in epoll_wait(), or about to be, and nobody has woken it.
    std::thread writer_ KORVO_GUARDED_BY(mutex_);
    bool writer_is_running_ KORVO_GUARDED_BY(mutex_) = false;
    bool writer_is_asleep_ KORVO_GUARDED_BY(mutex_) = false;
    /// It looks by itself within limits::watching, which is enough for what callbacks have sent.
    bool writer_watches_ KORVO_GUARDED_BY(mutex_) = false;
    bool callbacks_gather_ KORVO_GUARDED_BY(mutex_) = false;
    process::Descriptor writer_wake_ KORVO_GUARDED_BY(mutex_);
    /// What it waits for: being woken, and room in full sockets.
    Epoll full_ KORVO_GUARDED_BY(mutex_);
    /// Told whenever a thread is done with writing while the handle is being closed.
    std::condition_variable written_;

    std::thread thread_ KORVO_GUARDED_BY(mutex_);
    std::thread::id thread_id_ KORVO_GUARDED_BY(mutex_);
    bool is_running_ KORVO_GUARDED_BY(mutex_) = false;
    /// The messaging thread is in epoll_wait(), or about to be, and nobody has woken it.
    bool is_asleep_ KORVO_GUARDED_BY(mutex_) = false;
    Epoll epoll_ KORVO_GUARDED_BY(mutex_);
    process::Descriptor wake_ KORVO_GUARDED_BY(mutex_);
    CallbackFence fence_ KORVO_GUARDED_BY(mutex_);
    // Used by the messaging thread only.
    ReusedText lent_service_;
    ReusedText lent_source_;
    ReusedText lent_event_;
    std::vector<Registration<EventCallback>> called_;

    /// Threads in receiveAny(): one of them reads for all.
    std::condition_variable receivers_;
    bool receivers_have_reader_ KORVO_GUARDED_BY(mutex_) = false;
    unsigned int receiver_losses_ KORVO_GUARDED_BY(mutex_) = 0;
    unsigned int told_losses_ KORVO_GUARDED_BY(mutex_) = 0;
    /// Made, with the mutex held, and drained by the one that reads; signalled with the mutex held while there is one.
    process::Descriptor receivers_wake_;

    FolderWatch watch_ KORVO_GUARDED_BY(mutex_);
    /// The folder is gone, and so is the watch; it is started again with the next look at it.
    bool watch_is_over_ KORVO_GUARDED_BY(mutex_) = false;
    std::map<std::string, Subscription, std::less<>> subscriptions_ KORVO_GUARDED_BY(mutex_);
    /// By the names of their sockets.
    std::map<std::string, LostSubscription> lost_subscriptions_ KORVO_GUARDED_BY(mutex_);
};

}  // namespace platform

#endif
