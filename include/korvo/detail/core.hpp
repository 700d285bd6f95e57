// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_DETAIL_CORE_HPP
#define KORVO_DETAIL_CORE_HPP

// What stands behind an engine: its plain handles, its asynchronous calls and its two threads.
//
// A plain handle keeps each asynchronous call's registration, with its context, until it ends. So asynchronous calls go
// over sessions: plain handles with room for so many calls each, whose slots are the contexts. A full session takes no
// further call, and is ended when the last of its calls has. A slot is used once; a response that comes twice, late or
// after cancelling finds it empty.
//
// A call ends once: whoever takes it out of its slot (the response, the time-out, cancelling, the end of the engine)
// holds the one right to end it. Responses are read on a messaging thread, under a lock of the plain library. There a
// future is fulfilled and a callable is lined up; no code of the user's runs there, nor is any of it destroyed. The
// callback thread runs callables, or hands them to the user's executor. The keeper ends calls whose time is up, and
// full sessions, and runs no code of the user's either: so a callable may wait for a future whose time-out it is.
//
// One mutex guards everything that changes. No plain function and no callable is called while it is held.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "korvo/detail/call.hpp"
#include "korvo/detail/lists.hpp"
#include "korvo/options.hpp"
#include "korvo/result.hpp"
#include "korvo_api_action_engine.h"

namespace korvo::detail {

class Core : public std::enable_shared_from_this<Core> {
  public:
    explicit Core(Options &&options) : options_(std::move(options)) {}
    ~Core() = default;
    Core(Core const &) = delete;
    Core &operator=(Core const &) = delete;

    korvo_core_status open();
    /// Ends every call and returns when no callable runs but that on this thread.
    void close() noexcept;

    void *handle() const noexcept { return handle_; }
    char const *target() const noexcept { return options_.target ? options_.target->c_str() : nullptr; }
    std::chrono::milliseconds timeout(Timeout const &timeout) const noexcept {
        return timeout.value_or(options_.timeout);
    }

    /// Begins a call with `send(handle, slot)`, which sends and returns the status. False when the engine has ended and
    /// nobody will hear of the call. Throws when there is no memory, or no thread, for the call.
    template <typename Send>
    bool start(std::shared_ptr<Call> const &call, std::chrono::milliseconds timeout, Send const &send);

    /// Ends a call that will not be sent, with a failure that its callable or future gets.
    bool startFailed(std::shared_ptr<Call> const &call, Failure const &failure);

    /// The call of a slot, for the one that may end it; NULL when somebody has.
    std::shared_ptr<Call> claim(Slot &slot) noexcept;
    /// A claimed call has its result.
    void deliver(std::shared_ptr<Call> const &call) noexcept;

    void cancel(Call &call) noexcept;
    void cancel(std::shared_ptr<Listener> const &listener) noexcept;

    korvo_core_status subscribe(std::shared_ptr<Listener> const &listener);
    void awaitSubscription(void *handle) noexcept;

  private:
    using Lock = std::unique_lock<std::mutex>;

    /// A callable that runs, on the stack of its thread.
    struct Running {
        Recipient const *recipient;
        std::thread::id thread;
        Running *next;
    };

    static void eventArrived(
        unsigned int action_id, char const *action_name, unsigned char success, char const *source,
        void *context) noexcept {
        static_cast<Core *>(context)->queueEvent(action_id, action_name, success, source);
    }

    void log(korvo_core_log_priority priority, char const *what, char const *name, char const *why)
        const noexcept {
        (void)korvo_core_logging_log(logging_, priority, "%s: %s: %s", name, what, why);
    }

    std::unique_ptr<Session> newSession() const;
    Slot *takeSlot(Lock &lock, Call &call);
    void leave(Session *session) noexcept;
    std::shared_ptr<Call> claim(Lock const &lock, Call &call) noexcept;
    std::shared_ptr<Call> takeUnended() noexcept;
    void push(std::shared_ptr<Job> job) noexcept;
    bool isRunning(Recipient const *recipient, bool on_this_thread) const noexcept;
    void queueEvent(
        unsigned int action_id, char const *action_name, unsigned char success, char const *source) noexcept;

    void startKeeper(Lock const &lock);
    void startCallbackThread(Lock const &lock);
    void keep() noexcept;
    void runCallbacks() noexcept;
    void execute(Job &job) noexcept;

    Options const options_;
    void *logging_ = nullptr;
    void *handle_ = nullptr;

    std::mutex mutex_;
    std::condition_variable keeper_wakes_;
    std::condition_variable callbacks_wake_;
    std::condition_variable changed_;
    bool is_closed_ = false;
    std::thread keeper_;
    std::thread callback_thread_;

    std::list<std::shared_ptr<Call>> calls_;  // all that have not ended
    std::multimap<Clock::time_point, Call *> deadlines_;
    std::size_t claimed_ = 0;   // calls whose result is being made
    std::size_t starters_ = 0;  // threads that are beginning a call
    std::list<std::unique_ptr<Session>> sessions_;
    Session *current_ = nullptr;
    bool is_opening_ = false;

    std::shared_ptr<Job> first_;
    Job *last_ = nullptr;
    Running *running_ = nullptr;

    void *event_handle_ = nullptr;
    bool is_subscribing_ = false;
    std::vector<std::shared_ptr<Listener>> listeners_;
    std::size_t waiting_events_ = 0;
    std::size_t dropped_events_ = 0;
};

// ---- Opening and closing ----

inline korvo_core_status Core::open() {
    logging_ = options_.logging;
    if (logging_ == nullptr) {
        korvo_core_status const status = korvo_core_logging_init(options_.name.c_str(), &logging_);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            logging_ = nullptr;
            return status;
        }
    }
    return korvo_api_action_engine_initiator_init(nullptr, logging_, &handle_, 0, options_.name.c_str());
}

/// A call that has not ended, for the end of the engine: it has ended with that. NULL when there is none, but for those whose
/// callable runs.
inline std::shared_ptr<Call> Core::takeUnended() noexcept {
    Lock const lock(mutex_);
    for (std::shared_ptr<Call> const &one : calls_) {
        if (!one->is_running) {
            std::shared_ptr<Call> const call = one;
            if (call->is_waiting) {
                (void)claim(lock, *call);
                --claimed_;
            }
            call->is_over = true;
            calls_.erase(call->place);
            return call;
        }
    }
    return nullptr;
}

inline void Core::close() noexcept {
    std::vector<std::shared_ptr<Listener>> listeners;
    std::shared_ptr<Job> queue;
    {
        Lock lock(mutex_);
        is_closed_ = true;
        keeper_wakes_.notify_all();
        callbacks_wake_.notify_all();
        // Short: a response is being read, or a time-out told; or the callable that ends the engine has come before its own
        // call has returned.
        changed_.wait(lock, [this] { return claimed_ == 0 && starters_ == 0; });
        listeners.swap(listeners_);
        for (std::shared_ptr<Listener> const &listener : listeners) {
            listener->is_over = true;
        }
        queue = std::move(first_);
        last_ = nullptr;
    }
    // One at a time: what one's end runs may cancel another.
    while (std::shared_ptr<Call> const call = takeUnended()) {
        call->endWithEngine({KORVO_CORE_STATUS_IPC_FAILED, call->name(), engine_ended});
    }
    // One by one, or a long queue would be destroyed by as deep a recursion.
    while (queue != nullptr) {
        queue = std::move(queue->next);
    }
    {
        Lock lock(mutex_);
        changed_.wait(lock, [this] { return !isRunning(nullptr, /*on_this_thread*/ false); });
    }
    if (keeper_.joinable()) {
        keeper_.join();
    }
    if (callback_thread_.joinable()) {
        if (callback_thread_.get_id() == std::this_thread::get_id()) {
            callback_thread_.detach();
        } else {
            callback_thread_.join();
        }
    }
    sessions_.clear();
    listeners.clear();
    (void)korvo_api_action_engine_initiator_deinit(event_handle_);
    (void)korvo_api_action_engine_initiator_deinit(handle_);
    event_handle_ = nullptr;
    handle_ = nullptr;
    if (options_.logging == nullptr && logging_ != nullptr) {
        (void)korvo_core_logging_deinit(logging_);
    }
    logging_ = nullptr;
}

// ---- Sessions ----

inline std::unique_ptr<Session> Core::newSession() const {
    auto session = std::make_unique<Session>();
    session->core = const_cast<Core *>(this);
    for (Slot &slot : session->slots) {
        slot.session = session.get();
    }
    if (korvo_api_action_engine_initiator_init(
            nullptr, logging_, &session->handle, 0, options_.name.c_str()) != KORVO_CORE_STATUS_NO_ERROR) {
        return nullptr;
    }
    return session;
}

/// NULL when there is no session to be had. Gives the lock back meanwhile.
inline Slot *Core::takeSlot(Lock &lock, Call &call) {
    while (current_ == nullptr || current_->isFull()) {
        if (is_opening_) {
            changed_.wait(lock);
            continue;
        }
        is_opening_ = true;
        lock.unlock();
        std::list<std::unique_ptr<Session>> made;
        try {
            made.push_back(newSession());
        } catch (std::bad_alloc const &) {
            made.clear();
        }
        lock.lock();
        is_opening_ = false;
        changed_.notify_all();
        if (made.empty() || made.front() == nullptr) {
            return nullptr;
        }
        current_ = made.front().get();
        sessions_.splice(sessions_.end(), made);
    }
    Slot &slot = current_->slots[current_->used++];
    slot.call = &call;
    ++current_->waiting;
    ++current_->senders;
    return &slot;
}

inline void Core::leave(Session *session) noexcept {
    Lock const lock(mutex_);
    --starters_;
    if (session != nullptr && (--session->senders, session->isOver())) {
        keeper_wakes_.notify_one();
    }
    if (is_closed_) {
        changed_.notify_all();
    }
}

// ---- Calls ----

template <typename Send>
bool Core::start(std::shared_ptr<Call> const &call, std::chrono::milliseconds timeout, Send const &send) {
    Slot *slot = nullptr;
    Session *session = nullptr;
    {
        Lock lock(mutex_);
        if (is_closed_) {
            return false;
        }
        startKeeper(lock);
        if (call->runsCallable()) {
            startCallbackThread(lock);
        }
        auto const deadline = deadlines_.emplace(Clock::now() + timeout, call.get());
        try {
            call->place = calls_.insert(calls_.end(), call);
        } catch (...) {
            deadlines_.erase(deadline);
            throw;
        }
        call->deadline = deadline;
        call->is_waiting = true;
        call->is_over = false;
        if (deadline == deadlines_.begin()) {
            keeper_wakes_.notify_one();
        }
        ++starters_;
        slot = takeSlot(lock, *call);
        session = slot != nullptr ? slot->session : nullptr;
        // The lock was open while a session was made: the call may have ended since.
        if (slot != nullptr && !call->is_waiting) {
            slot->call = nullptr;
            --session->waiting;
            slot = nullptr;
        } else {
            call->slot = slot;
        }
    }
    korvo_core_status status = KORVO_CORE_STATUS_ALLOC_FAILED;
    if (slot != nullptr) {
        try {
            status = send(session->handle, slot);
        } catch (std::bad_alloc const &) {
        }
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        std::shared_ptr<Call> claimed;
        {
            Lock const lock(mutex_);
            claimed = claim(lock, *call);
        }
        if (claimed != nullptr) {
            call->fail({status, call->name(), nullptr});
            deliver(call);
        }
    }
    leave(session);
    return true;
}

inline bool Core::startFailed(std::shared_ptr<Call> const &call, Failure const &failure) {
    {
        Lock const lock(mutex_);
        if (is_closed_) {
            return false;
        }
        if (call->runsCallable()) {
            startCallbackThread(lock);
        }
        call->place = calls_.insert(calls_.end(), call);
        call->is_over = false;
        ++claimed_;
    }
    call->fail(failure);
    deliver(call);
    return true;
}

inline std::shared_ptr<Call> Core::claim(Lock const &, Call &call) noexcept {
    if (!call.is_waiting) {
        return nullptr;
    }
    call.is_waiting = false;
    deadlines_.erase(call.deadline);
    if (call.slot != nullptr) {
        Session &session = *call.slot->session;
        call.slot->call = nullptr;
        call.slot = nullptr;
        --session.waiting;
        if (session.isOver()) {
            keeper_wakes_.notify_one();
        }
    }
    ++claimed_;
    return *call.place;
}

inline std::shared_ptr<Call> Core::claim(Slot &slot) noexcept {
    Lock const lock(mutex_);
    // What comes after the end finds its call ended.
    return slot.call != nullptr && !is_closed_ ? claim(lock, *slot.call) : nullptr;
}

inline void Core::deliver(std::shared_ptr<Call> const &call) noexcept {
    Lock const lock(mutex_);
    --claimed_;
    if (is_closed_) {
        changed_.notify_all();
        if (call->runsCallable()) {
            return;  // what closes the engine finds it among the calls
        }
    }
    if (call->is_over) {
        return;
    }
    if (call->runsCallable()) {
        push(call);
    } else {
        call->is_over = true;
        calls_.erase(call->place);
    }
}

inline void Core::push(std::shared_ptr<Job> job) noexcept {
    Job *const added = job.get();
    (last_ != nullptr ? last_->next : first_) = std::move(job);
    last_ = added;
    callbacks_wake_.notify_one();
}

/// Of a recipient, or of any when that is NULL.
inline bool Core::isRunning(Recipient const *recipient, bool on_this_thread) const noexcept {
    for (Running const *one = running_; one != nullptr; one = one->next) {
        if ((recipient == nullptr || one->recipient == recipient) &&
            (one->thread == std::this_thread::get_id()) == on_this_thread) {
            return true;
        }
    }
    return false;
}

inline void Core::cancel(Call &call) noexcept {
    std::shared_ptr<Call> ended;
    {
        Lock lock(mutex_);
        if (!call.is_over && !call.is_running) {
            if (call.is_waiting) {
                (void)claim(lock, call);
                --claimed_;
            }
            call.is_over = true;
            ended = std::move(*call.place);
            calls_.erase(call.place);
        }
        changed_.wait(lock, [&] { return !isRunning(&call, /*on_this_thread*/ false); });
    }
    if (ended != nullptr) {
        ended->discard();
    }
}

inline void Core::cancel(std::shared_ptr<Listener> const &listener) noexcept {
    std::shared_ptr<Listener> removed;
    bool is_here = false;
    {
        Lock lock(mutex_);
        listener->is_over = true;
        for (auto place = listeners_.begin(); place != listeners_.end(); ++place) {
            if (*place == listener) {
                removed = std::move(*place);
                listeners_.erase(place);
                break;
            }
        }
        changed_.wait(lock, [&] { return !isRunning(listener.get(), /*on_this_thread*/ false); });
        is_here = isRunning(listener.get(), /*on_this_thread*/ true);
    }
    if (!is_here) {
        listener->discard();
    }
}

// ---- Events ----

/// A service that answers on the handle has its subscription, which commands of other handles might overtake before. It does
/// not matter what it answers; one that is not there is subscribed to when it comes.
inline void Core::awaitSubscription(void *handle) noexcept {
    int milliseconds = 0;
    unsigned int action_type = 0;
    if (toMilliseconds(options_.timeout, milliseconds)) {
        (void)korvo_api_action_engine_get_action_type_send_with_timeout(
            handle, target(), milliseconds, 0, &action_type);
    }
}

inline korvo_core_status Core::subscribe(std::shared_ptr<Listener> const &listener) {
    Lock lock(mutex_);
    changed_.wait(lock, [this] { return !is_subscribing_; });
    if (is_closed_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    startCallbackThread(lock);
    listeners_.reserve(listeners_.size() + 1);
    if (event_handle_ == nullptr) {
        is_subscribing_ = true;
        lock.unlock();
        void *made = nullptr;
        korvo_core_status const status =
            korvo_api_action_engine_initiator_init(nullptr, logging_, &made, 1, options_.name.c_str());
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            korvo_api_action_engine_action_completed_register_event_handler(made, eventArrived, this);
            awaitSubscription(made);
        }
        lock.lock();
        is_subscribing_ = false;
        changed_.notify_all();
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            return status;
        }
        event_handle_ = made;
    }
    listeners_.push_back(listener);
    return KORVO_CORE_STATUS_NO_ERROR;
}

inline void Core::queueEvent(
    unsigned int action_id, char const *action_name, unsigned char success, char const *source) noexcept {
    bool is_first_dropped = false;
    try {
        auto const event = std::make_shared<ActionCompleted>();
        event->action_id = ActionId{action_id};
        event->action_name = text(action_name);
        event->success = success != 0;
        event->source = text(source);
        Lock const lock(mutex_);
        for (std::shared_ptr<Listener> const &listener : listeners_) {
            if (is_closed_ || waiting_events_ == most_waiting_events) {
                is_first_dropped = !is_closed_ && dropped_events_++ == 0;
                break;
            }
            push(std::make_shared<EventJob>(listener, event));
            ++waiting_events_;
        }
    } catch (std::bad_alloc const &) {
        log(KORVO_CORE_LOG_PRIORITY_ERR, "an event was dropped", "on_action_completed", "no memory");
    }
    if (is_first_dropped) {
        log(KORVO_CORE_LOG_PRIORITY_WARNING, "events are dropped", "on_action_completed",
            "the callables take longer than the events come");
    }
}

// ---- Threads ----

inline void Core::startKeeper(Lock const &) {
    if (!keeper_.joinable()) {
        keeper_ = std::thread([core = shared_from_this()] { core->keep(); });
    }
}

inline void Core::startCallbackThread(Lock const &) {
    if (!callback_thread_.joinable()) {
        callback_thread_ = std::thread([core = shared_from_this()] { core->runCallbacks(); });
    }
}

inline void Core::keep() noexcept {
    Lock lock(mutex_);
    while (!is_closed_) {
        std::list<std::unique_ptr<Session>> over;
        for (auto place = sessions_.begin(); place != sessions_.end();) {
            auto const next = std::next(place);
            if ((*place)->isOver()) {
                current_ = current_ == place->get() ? nullptr : current_;
                over.splice(over.end(), sessions_, place);
            }
            place = next;
        }
        if (!over.empty()) {
            lock.unlock();
            over.clear();
            lock.lock();
        } else if (deadlines_.empty()) {
            keeper_wakes_.wait(lock);
        } else if (deadlines_.begin()->first > Clock::now()) {
            auto const until = deadlines_.begin()->first;
            keeper_wakes_.wait_until(lock, until);
        } else {
            std::shared_ptr<Call> const call = claim(lock, *deadlines_.begin()->second);
            lock.unlock();
            call->fail({KORVO_CORE_STATUS_IPC_FAILED, call->name(), no_response});
            deliver(call);
            lock.lock();
        }
    }
}

inline void Core::runCallbacks() noexcept {
    Lock lock(mutex_);
    while (true) {
        callbacks_wake_.wait(lock, [this] { return is_closed_ || first_ != nullptr; });
        if (is_closed_) {
            return;
        }
        std::shared_ptr<Job> job = std::move(first_);
        first_ = std::move(job->next);
        last_ = first_ != nullptr ? last_ : nullptr;
        if (!job->isLast()) {
            --waiting_events_;
            dropped_events_ = waiting_events_ == 0 ? 0 : dropped_events_;
        }
        lock.unlock();
        bool is_posted = false;
        if (options_.executor) {
            try {
                options_.executor([core = shared_from_this(), job] { core->execute(*job); });
                is_posted = true;
            } catch (...) {
                log(KORVO_CORE_LOG_PRIORITY_ERR, "runs on the engine's own thread", job->name(),
                    "the executor threw");
            }
        }
        if (!is_posted) {
            execute(*job);
        }
        job.reset();
        lock.lock();
    }
}

inline void Core::execute(Job &job) noexcept {
    Recipient &recipient = job.recipient();
    Running running{&recipient, std::this_thread::get_id(), nullptr};
    {
        Lock const lock(mutex_);
        if (is_closed_ || recipient.is_over) {
            return;
        }
        // An executor that took it and threw behind that runs it itself.
        if (job.isLast() && static_cast<Call &>(recipient).is_running) {
            return;
        }
        if (job.isLast()) {
            static_cast<Call &>(recipient).is_running = true;
        }
        running.next = running_;
        running_ = &running;
    }
    try {
        job.run();
    } catch (std::exception const &error) {
        log(KORVO_CORE_LOG_PRIORITY_ERR, "a callable threw", job.name(), error.what());
    } catch (...) {
        log(KORVO_CORE_LOG_PRIORITY_ERR, "a callable threw", job.name(), "what is no std::exception");
    }
    Lock const lock(mutex_);
    Running **link = &running_;
    while (*link != &running) {
        link = &(*link)->next;
    }
    *link = running.next;
    if (job.isLast()) {
        Call &call = static_cast<Call &>(recipient);
        call.is_running = false;
        call.is_over = true;
        calls_.erase(call.place);
    }
    changed_.notify_all();
}

}  // namespace korvo::detail

#endif
