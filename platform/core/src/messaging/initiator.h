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
#include "messaging/connection.h"
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

    /// The object that a command is sent for, if any; see Route.
    enum class For { anyone, object };
    korvo_core_status send(std::string_view service, std::string_view target, std::string_view request_id,
                           std::string_view command, For purpose, void const *owner);

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
    enum class WriteResult { whole, nothing, part };

    template <typename Callback>
    struct Registration {
        Callback callback;
        void *context;
    };

    /// A message that waits for its callback.
    struct Delivery {
        std::uint64_t number = 0;
        Route route = Route::anyone;
        void const *owner = nullptr;
        std::shared_ptr<Address const> address;
        /// Request identifier of a response, source of an event.
        Text first;
        Text body;
    };

    /// Deliveries of one kind with their bounds.
    struct DeliveryQueue {
        std::deque<Delivery> items;
        std::size_t bytes = 0;
        DropCounter dropped;

        static std::size_t sizeOf(Delivery const &delivery) {
            return delivery.first.size() + delivery.body.size();
        }
        bool hasRoom(std::size_t more, std::size_t most_items, std::size_t most_bytes) const {
            return items.size() < most_items && more <= most_bytes - std::min(bytes, most_bytes);
        }
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
    korvo_core_status connect(Address const &address, ConnectionPointer &connection);
    korvo_core_status connectByName(std::string const &socket_name, std::shared_ptr<Address const> address,
                                    bool knows_target, ConnectionPointer &connection);
    process::Descriptor openSocket(std::string const &socket_name, Address const &address,
                                   korvo_core_status &status);
    void watch(Connection &connection, bool wanted);
    void lose(Hold &hold, Connection &connection, char const *reason);
    void adoptSubscription(Hold &hold, Connection &connection);

    // initiator_sending.cpp
    WriteResult write(Connection &connection, std::string_view bytes);
    bool waitUntilWritable(Connection &connection, Deadline const &deadline);
    WriteResult writeControl(Connection &connection, frame::Type type);

    // initiator_reading.cpp
    ReadResult read(Hold &hold, Connection &connection, int flags);
    void readForReceivers(Hold &hold, Deadline const &deadline);
    void route(Hold &hold, Connection &connection, frame::Frame const &frame);
    void routeResponse(Hold &hold, Connection &connection, frame::Frame const &frame);
    void routeEvent(Hold &hold, Connection &connection, frame::Frame const &frame);
    void keep(Hold &hold, Request &request, Text response);
    void queueResponse(Hold &hold, Route route, void const *owner, std::shared_ptr<Address const> address,
                       Text id, Text body);
    void withdraw(std::string_view request_id);
    static void setReceiveTimeout(Connection &connection, int timeout);

    // initiator_delivering.cpp
    bool hasCallbacks() const { return !response_callbacks_.empty() || !event_callbacks_.empty(); }
    void startThread(Hold &hold);
    void stopPolling();
    void watchFolder();
    void run();
    void deliver(Hold &hold);
    bool takeDelivery(Delivery &delivery, bool &is_event);
    void callResponse(Hold &hold, Delivery delivery);
    void callEvent(Hold &hold, Delivery const &delivery);
    template <typename Callback>
    void call(Hold &hold, void *context, Callback callback);
    void handleEpollEvent(Hold &hold, std::uint64_t tag);
    void wakeThread();
    void wakeReceivers();
    void waitForCallback(Hold &hold, void *context);
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
    /// Tells initiators of one process apart, also when one lies where another one lay.
    std::uint64_t const serial_;
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
    DeliveryQueue waiting_responses_;
    DeliveryQueue waiting_events_;
    std::uint64_t next_delivery_ = 0;

    std::thread thread_;
    std::thread::id thread_id_;
    bool is_running_ = false;
    bool is_woken_ = false;
    process::Descriptor epoll_;
    process::Descriptor wake_;
    /// The callback that is just running.
    bool is_calling_ = false;
    void *calling_context_ = nullptr;
    std::uint64_t calling_number_ = 0;
    std::condition_variable called_;

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
