// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_TARGET_H
#define KORVO_PLATFORM_TARGET_H

// The service side of the messaging.
//
// One thread at a time serves: it waits for the sockets of all initiators, accepts new ones, reads commands
// and writes what their sockets would not take before. While a command callback is registered that is a
// thread of the target's own; otherwise it is whoever polls for commands, and whoever sends, for a moment
// each time.
//
// Nobody ever waits for an initiator. What a socket does not take stays in that initiator's outgoing queue,
// which is bounded; a stopped initiator loses events, and in the end its connection, and delays nobody else.
//
// What the serving thread sends while it handles one initiator's commands is gathered and leaves in one
// piece.
//
// Where memory is short for what an initiator has sent, or is to get, its connection ends: that tells it what has become of
// its calls, and it connects and subscribes again. Ending a connection and closing need no memory.
//
// Locks. One mutex guards the table of peers and the queue of commands, each peer's own mutex its outgoing
// queue. Order: mutex, peer's mutex. Neither is held during a system call that could wait, or during a
// callback.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "base/deadline.h"
#include "base/flood.h"
#include "base/mutex.h"
#include "base/notes.h"
#include "base/text.h"
#include "korvo_core.h"
#include "messaging/addressing.h"
#include "messaging/callback_fence.h"
#include "messaging/epoll.h"
#include "messaging/frame.h"
#include "messaging/messaging.h"
#include "messaging/name_claim.h"

namespace platform {

class Target final : public Messaging, public std::enable_shared_from_this<Target> {
  public:
    using CommandCallback = void (*)(char **, char **, char **, void *);

    struct Command {
        Text source;
        Text request_id;
        Text command;
    };

    Target(void *logging, std::string_view service, std::string_view target, std::string_view name,
           RuntimeFolder folder);

    /// Takes the name and listens. Called once, before anything else.
    korvo_core_status open();

    korvo_core_status receive(int timeout, Command &command);
    korvo_core_status setCommandCallback(CommandCallback callback, void *context);
    korvo_core_status sendResponse(std::string_view source, std::string_view request_id,
                                   std::string_view response);
    korvo_core_status sendEvent(std::string_view event);

    void close() override;
    Target *asTarget() override { return this; }

  private:
    /// One connected initiator.
    struct Peer {
        Peer(process::Descriptor connected, std::uint64_t peer_number, std::string peer_source,
             std::atomic<std::size_t> &held_by_all)
            : socket(std::move(connected)),
              number(peer_number),
              source(std::move(peer_source)),
              held(held_by_all) {}
        ~Peer() { held -= read_memory + unsent_memory; }

        /// Notes how much memory one of the two takes now.
        void charge(std::atomic<std::size_t> &part, std::size_t bytes) noexcept {
            if (part.load(std::memory_order_relaxed) != bytes) {
                held += bytes;
                held -= part.exchange(bytes);
            }
        }

        process::Descriptor const socket;
        std::uint64_t const number;
        /// Its address as the service sees it, not used twice by any service.
        std::string const source;
        /// What all peers of the service hold together, and what this one does of it.
        std::atomic<std::size_t> &held;
        std::atomic<std::size_t> read_memory{0};
        std::atomic<std::size_t> unsent_memory{0};

        // Used by the serving thread only.
        frame::Decoder decoder;

        Mutex mutex;
        bool is_alive KORVO_GUARDED_BY(mutex) = true;
        std::string outgoing KORVO_GUARDED_BY(mutex);
        /// How much of `outgoing` has left already.
        std::size_t sent KORVO_GUARDED_BY(mutex) = 0;
        /// The serving thread will send, for one of three reasons: it gathers what it sends itself, another
        /// thread has asked it to, or the socket is full.
        bool is_gathered KORVO_GUARDED_BY(mutex) = false;
        bool is_arranged KORVO_GUARDED_BY(mutex) = false;
        bool is_blocked KORVO_GUARDED_BY(mutex) = false;
        Flood dropped_events KORVO_GUARDED_BY(mutex);
    };
    using PeerPointer = std::shared_ptr<Peer>;

    class ServingRole;

    // target_serving.cpp
    void serve(int timeout) KORVO_EXCLUDES(mutex_);
    void serveWithoutWaiting() KORVO_EXCLUDES(mutex_);
    void acceptPeers() KORVO_EXCLUDES(mutex_);
    /// How long serve() may wait at most, and what it does about what has waited for that long.
    int boundedWait(int timeout) const;
    void tellOfFloods(bool all);
    void readPeer(PeerPointer const &peer) KORVO_EXCLUDES(mutex_);
    void handleRead(PeerPointer const &peer) KORVO_EXCLUDES(mutex_);
    void handle(PeerPointer const &peer, frame::Frame const &frame) KORVO_EXCLUDES(mutex_);
    void handleCommand(PeerPointer const &peer, frame::Frame const &frame) KORVO_EXCLUDES(mutex_);
    /// Each throws std::bad_alloc and changes nothing then.
    void subscribe(PeerPointer const &peer) KORVO_EXCLUDES(mutex_);
    void unsubscribe(PeerPointer const &peer) KORVO_EXCLUDES(mutex_);
    /// Makes the list of subscribers anew, without those that are gone.
    void replaceSubscribers(PeerPointer const &without, PeerPointer const &with) KORVO_REQUIRES(mutex_);
    void forgetSubscriber(PeerPointer const &peer) noexcept KORVO_REQUIRES(mutex_);
    void call(Hold &hold, std::string_view source, std::string_view request_id, std::string_view command)
        KORVO_REQUIRES(mutex_);
    Command takeCommand() KORVO_REQUIRES(mutex_);
    void startThread(Hold &hold) KORVO_REQUIRES(mutex_);
    void run() KORVO_EXCLUDES(mutex_);
    bool onOwnThread() const KORVO_REQUIRES(mutex_) {
        return is_running_ && std::this_thread::get_id() == thread_id_;
    }

    // target_sending.cpp
    /// How soon a frame must leave: an event may wait until the serving thread comes to it.
    enum class Urgency { now, soon };
    enum class PassResult { done, arrange, too_much, gone };
    PassResult passOn(PeerPointer const &peer, frame::Type type, std::string_view first,
                      std::string_view second, Urgency urgency) KORVO_EXCLUDES(mutex_);
    enum class FlushResult { done, blocked, gone };
    FlushResult flush(Peer &peer) KORVO_REQUIRES(peer.mutex);
    void flushOrDrop(PeerPointer const &peer) KORVO_EXCLUDES(mutex_);
    void flushGathered() KORVO_EXCLUDES(mutex_);
    void flushArranged() KORVO_EXCLUDES(mutex_);
    void arrangeFlush(std::vector<PeerPointer> const &peers) KORVO_EXCLUDES(mutex_);
    /// Whether the serving thread will come to it.
    bool gather(PeerPointer const &peer) noexcept;
    void drop(PeerPointer const &peer, char const *reason) noexcept KORVO_EXCLUDES(mutex_);
    void boundMemory() KORVO_EXCLUDES(mutex_);
    /// Disconnects the peer for which most is held, to go on with less memory. False when nobody makes the service hold much.
    bool giveMemoryBack() KORVO_EXCLUDES(mutex_);
    /// What is held for all peers, and for the one that it is most for.
    struct Holdings {
        PeerPointer greediest;
        std::size_t most = 0;
        std::size_t all = 0;
    };
    Holdings holdings() KORVO_EXCLUDES(mutex_);
    PeerPointer findPeer(std::string_view source) KORVO_EXCLUDES(mutex_);
    bool isServingThread() const {
        return serving_thread_.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    Log const log_;
    std::string const service_;
    std::string const target_;
    std::string const name_;
    RuntimeFolder const folder_;
    std::string const source_prefix_;
    unsigned int const generation_ = process::generation();

    NameClaim claim_;
    Epoll epoll_;
    process::Descriptor wake_;

    std::atomic<std::thread::id> serving_thread_{std::thread::id()};
    /// Before all that holds peers, which use it to their end.
    std::atomic<std::size_t> held_by_peers_{0};
    // Used by the serving thread only.
    std::vector<PeerPointer> gathered_;
    Clock::time_point gathering_since_{};
    /// When connections are accepted again, after one could not be.
    std::optional<Clock::time_point> accepts_again_;
    Flood failed_accepts_;
    Flood strangers_;
    Flood refused_peers_;
    Flood broken_frames_;
    Flood odd_frames_;
    Flood hoarders_;
    Flood shortages_;
    /// The peer whose commands it is just handling.
    PeerPointer handled_;
    ReusedText lent_source_;
    ReusedText lent_request_id_;
    ReusedText lent_command_;

    Mutex mutex_;
    bool is_closing_ KORVO_GUARDED_BY(mutex_) = false;
    bool is_serving_ KORVO_GUARDED_BY(mutex_) = false;
    std::condition_variable served_;
    std::unordered_map<std::uint64_t, PeerPointer> peers_ KORVO_GUARDED_BY(mutex_);
    /// Replaced as a whole, so that a publisher can use it without the mutex.
    std::shared_ptr<std::vector<PeerPointer> const> subscribers_ KORVO_GUARDED_BY(mutex_);
    /// The list holds one that is gone, since memory was too short for a new list.
    std::atomic<bool> has_gone_subscribers_{false};
    std::uint64_t next_peer_ KORVO_GUARDED_BY(mutex_) = 16;
    std::deque<Command> commands_ KORVO_GUARDED_BY(mutex_);
    std::size_t command_bytes_ KORVO_GUARDED_BY(mutex_) = 0;
    CommandCallback callback_ KORVO_GUARDED_BY(mutex_) = nullptr;
    void *context_ KORVO_GUARDED_BY(mutex_) = nullptr;
    CallbackFence fence_ KORVO_GUARDED_BY(mutex_);
    std::thread thread_ KORVO_GUARDED_BY(mutex_);
    std::thread::id thread_id_ KORVO_GUARDED_BY(mutex_);
    bool is_running_ KORVO_GUARDED_BY(mutex_) = false;
    /// Peers that other threads have asked the serving thread to send to.
    std::vector<PeerPointer> arranged_ KORVO_GUARDED_BY(mutex_);
};

}  // namespace platform

#endif
