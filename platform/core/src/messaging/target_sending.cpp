// SPDX-License-Identifier: Apache-2.0
// Target: responses and events.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

#include "base/wake.h"
#include "messaging/target.h"

namespace platform {

korvo_core_status Target::sendResponse(std::string_view source, std::string_view request_id,
                                       std::string_view response) {
    if (!frame::fits(request_id, response)) {
        log_.error("a response of %zu bytes was not sent: a message has at most %zu bytes", response.size(),
                   limits::frame_payload);
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    PeerPointer const peer = findPeer(source);
    PassResult result = PassResult::gone;
    if (peer != nullptr) {
        try {
            result = passOn(peer, frame::Type::response, request_id, response, Urgency::now);
        } catch (std::bad_alloc const &) {
            // Who waits for it is told by the end of the connection.
            drop(peer, "memory is too short for its response");
            throw;
        }
    }
    boundMemory();
    switch (result) {
        case PassResult::done:
        case PassResult::arrange:
            return KORVO_CORE_STATUS_NO_ERROR;
        case PassResult::too_much:
            drop(peer, "it does not read its responses");
            return KORVO_CORE_STATUS_IPC_FAILED;
        case PassResult::gone:
            break;
    }
    log_.info("a response of service %s was not sent: the initiator that it is for is gone",
              service_.c_str());
    return KORVO_CORE_STATUS_DISABLED_TARGET;
}

korvo_core_status Target::sendEvent(std::string_view event) {
    if (!frame::fits(target_, event)) {
        log_.error("an event of %zu bytes was not sent: a message has at most %zu bytes", event.size(),
                   limits::frame_payload);
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    // Without a thread of its own the service may not have read yet who subscribes.
    serveWithoutWaiting();
    std::shared_ptr<std::vector<PeerPointer> const> subscribers;
    Urgency urgency = Urgency::now;
    {
        Hold hold(mutex_, log_);
        if (is_closing_) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        subscribers = subscribers_;
        if (is_running_) {
            urgency = Urgency::soon;
        }
    }
    std::vector<PeerPointer> to_arrange;
    if (urgency == Urgency::soon) {
        to_arrange.reserve(subscribers->size());
    }
    bool has_failed = false;
    auto const pass = [&](PeerPointer const &peer) {
        try {
            return passOn(peer, frame::Type::event, target_, event, urgency);
        } catch (std::bad_alloc const &) {
            has_failed = true;
            return PassResult::done;
        }
    };
    for (PeerPointer const &peer : *subscribers) {
        switch (pass(peer)) {
            case PassResult::arrange:
                to_arrange.push_back(peer);
                break;
            case PassResult::too_much:
                drop(peer, "it does not read its events");
                break;
            case PassResult::done:
            case PassResult::gone:
                break;
        }
    }
    if (!to_arrange.empty()) {
        arrangeFlush(to_arrange);
    }
    boundMemory();
    return has_failed ? KORVO_CORE_STATUS_ALLOC_FAILED : KORVO_CORE_STATUS_NO_ERROR;
}

Target::PassResult Target::passOn(PeerPointer const &peer, frame::Type type, std::string_view first,
                                  std::string_view second, Urgency urgency) {
    FlushResult flushed = FlushResult::done;
    {
        Hold hold(peer->mutex, log_);
        if (!peer->is_alive) {
            return PassResult::gone;
        }
        std::size_t const waiting = peer->outgoing.size() - peer->sent;
        std::size_t const more = first.size() + second.size();
        if (type == frame::Type::event && waiting != 0 && waiting + more > limits::outgoing_event_bytes) {
            if (peer->dropped_events.count()) {
                hold.warn("an initiator of service %s does not read its events; dropped %llu so far",
                          service_.c_str(), peer->dropped_events.total());
            }
            return PassResult::done;
        }
        if (waiting != 0 && waiting + more > limits::outgoing_bytes) {
            return PassResult::too_much;
        }
        if (peer->sent > limits::outgoing_gathered_bytes && peer->sent > waiting) {
            peer->outgoing.erase(0, peer->sent);
            peer->sent = 0;
        }
        frame::append(peer->outgoing, type, first, second);
        peer->charge(peer->unsent_memory, peer->outgoing.capacity());
        if (peer->is_blocked) {
            return PassResult::done;
        }
        if (isServingThread() && (peer->is_gathered || gather(peer))) {
            peer->is_gathered = true;
            return PassResult::done;
        }
        if (urgency == Urgency::soon && waiting + more < limits::outgoing_gathered_bytes) {
            return std::exchange(peer->is_arranged, true) ? PassResult::done : PassResult::arrange;
        }
        flushed = flush(*peer);
    }
    if (flushed == FlushResult::gone) {
        drop(peer, "it cannot be sent to");
        return PassResult::gone;
    }
    return PassResult::done;
}

Target::FlushResult Target::flush(Peer &peer) {
    while (peer.sent < peer.outgoing.size()) {
        ssize_t const count = send(peer.socket.get(), peer.outgoing.data() + peer.sent,
                                   peer.outgoing.size() - peer.sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count >= 0) {
            peer.sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!peer.is_blocked) {
                // Where nobody would come to know that there is room again, its end tells the initiator.
                if (!epoll_.change(peer.socket.get(), peer.number, EPOLLIN | EPOLLOUT)) {
                    return FlushResult::gone;
                }
                peer.is_blocked = true;
            }
            return FlushResult::blocked;
        } else if (errno != EINTR) {
            return FlushResult::gone;
        }
    }
    peer.sent = 0;
    if (peer.outgoing.capacity() > 4 * limits::outgoing_gathered_bytes) {
        peer.outgoing = std::string();
    } else {
        peer.outgoing.clear();
    }
    peer.charge(peer.unsent_memory, peer.outgoing.capacity());
    if (peer.is_blocked) {
        peer.is_blocked = false;
        // Otherwise the serving thread would be woken without end, for room that nobody needs.
        if (!epoll_.change(peer.socket.get(), peer.number, EPOLLIN)) {
            return FlushResult::gone;
        }
    }
    return FlushResult::done;
}

void Target::flushOrDrop(PeerPointer const &peer) {
    FlushResult result = FlushResult::done;
    {
        MutexLock const lock(peer->mutex);
        peer->is_gathered = false;
        peer->is_arranged = false;
        if (peer->is_alive) {
            result = flush(*peer);
        }
    }
    if (result == FlushResult::gone) {
        drop(peer, "it cannot be sent to");
    }
}

bool Target::gather(PeerPointer const &peer) noexcept {
    try {
        gathered_.push_back(peer);
    } catch (std::bad_alloc const &) {
        return false;
    }
    if (gathered_.size() == 1) {
        gathering_since_ = Clock::now();
    }
    return true;
}

void Target::flushGathered() {
    for (PeerPointer const &peer : gathered_) {
        flushOrDrop(peer);
    }
    gathered_.clear();
}

void Target::flushArranged() {
    std::vector<PeerPointer> peers;
    {
        Hold hold(mutex_, log_);
        peers.swap(arranged_);
    }
    for (PeerPointer const &peer : peers) {
        flushOrDrop(peer);
    }
}

void Target::arrangeFlush(std::vector<PeerPointer> const &peers) {
    {
        Hold hold(mutex_, log_);
        if (is_running_) {
            bool const is_first = arranged_.empty();
            try {
                arranged_.insert(arranged_.end(), peers.begin(), peers.end());
                if (is_first) {
                    signalWake(wake_);
                }
                return;
            } catch (std::bad_alloc const &) {
                // Then it is done here and now.
            }
        }
    }
    for (PeerPointer const &peer : peers) {
        flushOrDrop(peer);
    }
}

Target::Holdings Target::holdings() {
    Holdings found;
    Hold hold(mutex_, log_);
    // Of those that are connected: others are just about to go.
    for (auto const &[number, peer] : peers_) {
        std::size_t const bytes = peer->read_memory + peer->unsent_memory;
        found.all += bytes;
        if (bytes > found.most) {
            found.most = bytes;
            found.greediest = peer;
        }
    }
    return found;
}

void Target::boundMemory() {
    while (held_by_peers_.load(std::memory_order_relaxed) > limits::service_bytes) {
        Holdings const held = holdings();
        if (held.all <= limits::service_bytes) {
            return;
        }
        // Other threads do this for what the service sends, which is its own to bound.
        if (!isServingThread() || hoarders_.count()) {
            log_.warning(
                "an initiator of service %s is disconnected: all together make it hold %zu bytes, this one "
                "%zu",
                service_.c_str(), held.all, held.most);
        }
        drop(held.greediest, "the service holds too much, and for it the most");
    }
}

bool Target::giveMemoryBack() {
    Holdings const held = holdings();
    // What each connection reads with is no hoard.
    if (held.most <= limits::read_buffer) {
        return false;
    }
    if (shortages_.count()) {
        log_.warning(
            "memory is too short; an initiator of service %s is disconnected, for which it holds %zu bytes",
            service_.c_str(), held.most);
    }
    drop(held.greediest, "memory is too short, and the service holds the most for it");
    return true;
}

void Target::drop(PeerPointer const &peer, char const *reason) noexcept {
    unsigned long long dropped_events = 0;
    {
        Hold hold(mutex_, log_);
        if (peers_.erase(peer->number) == 0) {
            return;
        }
        MutexLock const lock(peer->mutex);
        peer->is_alive = false;
        peer->outgoing = std::string();
        peer->sent = 0;
        peer->charge(peer->unsent_memory, 0);
        dropped_events = peer->dropped_events.total();
        (void)epoll_.remove(peer->socket.get());
        // The descriptor itself is closed by the last thread that uses it.
        (void)shutdown(peer->socket.get(), SHUT_RDWR);
        forgetSubscriber(peer);
    }
    if (dropped_events != 0) {
        log_.warning("an initiator of service %s is gone that did not read %llu of its events",
                     service_.c_str(), dropped_events);
    }
    log_.info("an initiator of service %s is gone: %s", service_.c_str(), reason);
}

Target::PeerPointer Target::findPeer(std::string_view source) {
    if (isServingThread() && handled_ != nullptr && handled_->source == source) {
        // Mostly a command is answered at once. Whether the initiator is still there is seen when it is sent to.
        return handled_;
    }
    if (source.size() <= source_prefix_.size() || source.substr(0, source_prefix_.size()) != source_prefix_) {
        return nullptr;
    }
    std::uint64_t number = 0;
    char const *const begin = source.data() + source_prefix_.size();
    char const *const end = source.data() + source.size();
    auto const [stopped, failure] = std::from_chars(begin, end, number);
    if (failure != std::errc() || stopped != end) {
        return nullptr;
    }
    Hold hold(mutex_, log_);
    auto const place = peers_.find(number);
    return place == peers_.end() ? nullptr : place->second;
}

}  // namespace platform
