// SPDX-License-Identifier: Apache-2.0
// Target: accepting initiators and taking their commands.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "base/wake.h"
#include "base/worker.h"
#include "error_words.h"
#include "messaging/serving_role.h"
#include "messaging/target.h"

namespace platform {

namespace {

/// How long no initiators are accepted after the process ran out of descriptors.
constexpr std::chrono::milliseconds accept_pause{100};

}  // namespace

korvo_core_status Target::receive(int timeout, Command &command) {
    Deadline const deadline(timeout);
    Hold hold(mutex_, log_);
    bool has_looked = false;
    for (;;) {
        if (callback_ != nullptr) {
            hold.warn("commands cannot be polled for while a command callback is registered");
            return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
        }
        if (is_closing_) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        if (!commands_.empty()) {
            command = takeCommand();
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        if (has_looked && deadline.hasPassed()) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        has_looked = true;
        if (is_serving_) {
            if (!deadline.hasPassed()) {
                deadline.wait(served_, hold.mutex());
            }
            continue;
        }
        ServingRole const role(hold, *this);
        serve(deadline.remaining());
    }
}

korvo_core_status Target::setCommandCallback(CommandCallback callback, void *context) {
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (callback != nullptr) {
        callback_ = callback;
        context_ = context;
        // Who takes the one before back does not wait for the thread to end: it goes on.
        served_.notify_all();
        startThread(hold);
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    callback_ = nullptr;
    context_ = nullptr;
    if (!onOwnThread()) {
        signalWake(wake_);
        served_.wait(hold.mutex(),
                     [&]() KORVO_REQUIRES(mutex_) { return !is_running_ || callback_ != nullptr; });
        // Where another thread has registered one meanwhile, the old one may still run.
        fence_.wait(hold, nullptr);
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

void Target::startThread(Hold &hold) {
    if (is_running_) {
        return;
    }
    while (thread_.joinable()) {
        // It has given up is_running_ and will not run long; but it may still send what was arranged, under the mutex.
        std::thread ended = std::move(thread_);
        hold.unlock(mutex_);
        ended.join();
        hold.lock(mutex_);
        if (is_running_ || is_closing_ || callback_ == nullptr) {
            return;
        }
    }
    try {
        thread_ = startWorker("korvo-service", [self = shared_from_this()] { self->run(); });
    } catch (std::exception const &error) {
        callback_ = nullptr;
        hold.warn("cannot start a thread for commands: %s", wordsOf(error));
        throw;
    }
    thread_id_ = thread_.get_id();
    is_running_ = true;
    // For a thread that polls just now; it has to leave.
    signalWake(wake_);
}

void Target::run() {
    Hold hold(mutex_, log_);
    served_.wait(hold.mutex(), [&]() KORVO_REQUIRES(mutex_) { return !is_serving_; });
    is_serving_ = true;
    while (!is_closing_ && callback_ != nullptr) {
        try {
            // What came while nobody was there to take it.
            while (!commands_.empty() && callback_ != nullptr && !is_closing_) {
                Command const command = takeCommand();
                call(hold, command.source.view(), command.request_id.view(), command.command.view());
            }
            if (is_closing_ || callback_ == nullptr) {
                break;
            }
            hold.unlock(mutex_);
            serve(-1);
            hold.lock(mutex_);
        } catch (std::exception const &error) {
            hold.ensureLocked();
            if (shortages_.count()) {
                hold.warn("service %s could not serve for a moment: %s", service_.c_str(), wordsOf(error));
            }
            // What could not be read is still there.
            served_.wait_for(hold.mutex(), limits::failure_rest,
                             [&]() KORVO_REQUIRES(mutex_) { return is_closing_ || callback_ == nullptr; });
        }
    }
    is_serving_ = false;
    is_running_ = false;
    served_.notify_all();
    hold.unlock(mutex_);
    flushArranged();
}

Target::Command Target::takeCommand() {
    Command command = std::move(commands_.front());
    commands_.pop_front();
    command_bytes_ -= command.command.size();
    return command;
}

int Target::boundedWait(int timeout) const {
    std::optional<Clock::time_point> until = accepts_again_;
    for (Flood const *const flood : {&failed_accepts_, &strangers_, &refused_peers_, &broken_frames_,
                                     &odd_frames_, &hoarders_, &shortages_}) {
        std::optional<Clock::time_point> const due = flood->due();
        if (due && (!until || *due < *until)) {
            until = due;
        }
    }
    if (!until) {
        return timeout;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now()).count();
    int const bound = static_cast<int>(std::max<decltype(left)>(left, 0));
    return timeout < 0 ? bound : std::min(timeout, bound);
}

void Target::tellOfFloods(bool all) {
    auto const now = Clock::now();
    auto const tell = [&](Flood &flood, char const *what) {
        std::optional<Clock::time_point> const due = flood.due();
        if (due && (all || *due <= now)) {
            log_.warning("service %s: %llu more %s, %llu in all", service_.c_str(), flood.takeUntold(now),
                         what, flood.total());
        }
    };
    tell(failed_accepts_, "connections could not be accepted");
    tell(strangers_, "connections of others were refused");
    tell(refused_peers_, "initiators were refused");
    tell(broken_frames_, "initiators sent broken frames");
    tell(odd_frames_, "frames came that only services send");
    tell(hoarders_, "initiators were disconnected that it held the most for");
    tell(shortages_, "times memory was too short to serve");
}

void Target::serveWithoutWaiting() {
    Hold hold(mutex_, log_);
    if (is_serving_ || is_closing_) {
        return;
    }
    ServingRole const role(hold, *this);
    serve(0);
}

void Target::serve(int timeout) {
    struct Serving {
        explicit Serving(Target &served) : target(served) {
            target.serving_thread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ~Serving() {
            target.handled_ = nullptr;
            target.serving_thread_.store(std::thread::id(), std::memory_order_relaxed);
        }
        Serving(Serving const &) = delete;
        Serving &operator=(Serving const &) = delete;
        Target &target;
    };
    Serving const serving(*this);
    flushGathered();
    std::array<epoll_event, 32> events;
    if (has_gone_subscribers_.load(std::memory_order_relaxed)) {
        Hold hold(mutex_, log_);
        forgetSubscriber(nullptr);
    }
    int const count =
        epoll_wait(epoll_.descriptor(), events.data(), static_cast<int>(events.size()), boundedWait(timeout));
    tellOfFloods(/*all*/ false);
    if (accepts_again_ && *accepts_again_ <= Clock::now() &&
        epoll_.change(claim_.listener(), listener_tag, EPOLLIN)) {
        accepts_again_.reset();
    }
    for (int index = 0; index < count; ++index) {
        epoll_event const &event = events.at(static_cast<std::size_t>(index));
        if (event.data.u64 == wake_tag) {
            drainWake(wake_);
            flushArranged();
            continue;
        }
        if (event.data.u64 == listener_tag) {
            acceptPeers();
            continue;
        }
        PeerPointer peer;
        bool may_read = true;
        {
            Hold hold(mutex_, log_);
            if (is_closing_) {
                break;
            }
            // A copy, since the kernel's structure is packed and its member need not be aligned.
            std::uint64_t const number = event.data.u64;
            auto const place = peers_.find(number);
            if (place == peers_.end()) {
                continue;
            }
            peer = place->second;
            may_read = callback_ != nullptr || (commands_.size() < limits::waiting_commands &&
                                                command_bytes_ < limits::waiting_command_bytes);
        }
        if ((event.events & EPOLLOUT) != 0) {
            flushOrDrop(peer);
        }
        if ((event.events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0 && may_read) {
            readPeer(peer);
        }
    }
}

void Target::acceptPeers() {
    // A callback has closed the handle.
    if (claim_.listener() < 0) {
        return;
    }
    for (unsigned int accepted = 0; accepted < limits::accepted_at_once; ++accepted) {
        auto connected = process::Descriptor::madeBy(
            [&] { return accept4(claim_.listener(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK); });
        if (!connected) {
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                return;
            }
            if (errno == EINTR || errno == ECONNABORTED) {
                continue;
            }
            int const failure = errno;
            if (failed_accepts_.count()) {
                log_.error("cannot accept a connection: %s", ErrorText(failure).get());
            }
            // The listener stays readable; it is left alone for a while, or this thread would do nothing
            // else.
            (void)epoll_.change(claim_.listener(), listener_tag, 0);
            accepts_again_ = Clock::now() + accept_pause;
            return;
        }
        if (!isTrustedPeer(connected.get(), log_, strangers_)) {
            continue;
        }
        Hold hold(mutex_, log_);
        if (peers_.size() >= limits::peers) {
            if (refused_peers_.count()) {
                hold.warn("refused an initiator: service %s has %zu already; %llu refused so far",
                          service_.c_str(), limits::peers, refused_peers_.total());
            }
            continue;
        }
        std::uint64_t const number = next_peer_++;
        auto const peer = std::make_shared<Peer>(std::move(connected), number,
                                                 source_prefix_ + std::to_string(number), held_by_peers_);
        if (!epoll_.add(peer->socket.get(), number, EPOLLIN)) {
            int const failure = errno;
            if (refused_peers_.count()) {
                hold.warn("refused an initiator: %s", ErrorText(failure).get());
            }
            continue;
        }
        peers_.emplace(number, peer);
    }
}

void Target::readPeer(PeerPointer const &peer) {
    frame::Decoder::Space space = {};
    try {
        space = peer->decoder.space();
    } catch (std::bad_alloc const &) {
        // Otherwise frames without an end would keep all memory, and nobody would be served any more.
        if (!giveMemoryBack()) {
            throw;
        }
        return;
    }
    ssize_t const count = recv(peer->socket.get(), space.begin, space.size, MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
        return;
    }
    if (count <= 0) {
        drop(peer, count == 0 ? "it closed the connection" : ErrorText(errno).get());
        return;
    }
    peer->decoder.filled(static_cast<std::size_t>(count));
    peer->charge(peer->read_memory, peer->decoder.memory());
    handled_ = peer;
    try {
        handleRead(peer);
    } catch (std::bad_alloc const &) {
        if (shortages_.count()) {
            log_.warning(
                "memory is too short for what an initiator of service %s has sent; it is disconnected",
                service_.c_str());
        }
        drop(peer, "memory is too short for what it sent");
    }
    handled_ = nullptr;
    flushGathered();
    peer->decoder.trim();
    peer->charge(peer->read_memory, peer->decoder.memory());
    boundMemory();
}

void Target::handleRead(PeerPointer const &peer) {
    frame::Frame frame;
    for (;;) {
        frame::Decoder::Result const result = peer->decoder.next(frame);
        if (result == frame::Decoder::Result::incomplete) {
            break;
        }
        if (result == frame::Decoder::Result::broken) {
            if (broken_frames_.count()) {
                log_.warning("an initiator of service %s sent a broken frame: %s", service_.c_str(),
                             peer->decoder.problem());
            }
            drop(peer, "it sent a broken frame");
            break;
        }
        handle(peer, frame);
        if (!gathered_.empty() && Clock::now() - gathering_since_ > limits::gathering) {
            flushGathered();
        }
    }
}

void Target::handle(PeerPointer const &peer, frame::Frame const &frame) {
    switch (frame.type) {
        case frame::Type::command:
            handleCommand(peer, frame);
            break;
        case frame::Type::subscribe:
            subscribe(peer);
            break;
        case frame::Type::unsubscribe:
            unsubscribe(peer);
            break;
        case frame::Type::response:
        case frame::Type::event:
            if (odd_frames_.count()) {
                log_.warning("an initiator of service %s sent what only services send; ignored",
                             service_.c_str());
            }
            break;
    }
}

void Target::handleCommand(PeerPointer const &peer, frame::Frame const &frame) {
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return;
    }
    if (callback_ != nullptr) {
        call(hold, peer->source, frame.first, frame.second);
    } else {
        commands_.push_back(Command{Text(peer->source), Text(frame.first), Text(frame.second)});
        command_bytes_ += frame.second.size();
    }
}

/// With a callback registered; the mutex is free during the callback.
void Target::call(Hold &hold, std::string_view source, std::string_view request_id,
                  std::string_view command) {
    CommandCallback const callback = callback_;
    void *const context = context_;
    char **const lent_source = lent_source_.lend(source);
    char **const lent_request_id = lent_request_id_.lend(request_id);
    char **const lent_command = lent_command_.lend(command);
    fence_.run(hold, mutex_, context, [&] {
        try {
            callback(lent_source, lent_request_id, lent_command, context);
        } catch (std::exception const &error) {
            log_.error("a command callback threw an exception: %s", wordsOf(error));
        } catch (...) {
            log_.error("a command callback threw something that is no exception");
        }
        process::endOrphan(generation_);
    });
}

void Target::subscribe(PeerPointer const &peer) {
    Hold hold(mutex_, log_);
    if (std::find(subscribers_->begin(), subscribers_->end(), peer) == subscribers_->end() &&
        peers_.count(peer->number) != 0) {
        replaceSubscribers(nullptr, peer);
    }
}

void Target::unsubscribe(PeerPointer const &peer) {
    Hold hold(mutex_, log_);
    if (std::find(subscribers_->begin(), subscribers_->end(), peer) != subscribers_->end()) {
        replaceSubscribers(peer, nullptr);
    }
}

void Target::replaceSubscribers(PeerPointer const &without, PeerPointer const &with) {
    auto changed = std::make_shared<std::vector<PeerPointer>>();
    changed->reserve(subscribers_->size() + 1);
    for (PeerPointer const &subscriber : *subscribers_) {
        if (subscriber != without && peers_.count(subscriber->number) != 0) {
            changed->push_back(subscriber);
        }
    }
    if (with != nullptr) {
        changed->push_back(with);
    }
    subscribers_ = std::move(changed);
    has_gone_subscribers_ = false;
}

void Target::forgetSubscriber(PeerPointer const &peer) noexcept {
    if (!has_gone_subscribers_ &&
        std::find(subscribers_->begin(), subscribers_->end(), peer) == subscribers_->end()) {
        return;
    }
    try {
        replaceSubscribers(peer, nullptr);
    } catch (std::bad_alloc const &) {
        // Nothing is sent to it any more. It goes with the next change of the list.
        has_gone_subscribers_ = true;
    }
}

}  // namespace platform
