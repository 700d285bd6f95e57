// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_DETAIL_CALL_HPP
#define KORVO_DETAIL_CALL_HPP

// Asynchronous calls and subscriptions as objects; core.hpp says who does what with them.

#include <chrono>
#include <cstddef>
#include <exception>
#include <functional>
#include <future>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "korvo/options.hpp"
#include "korvo/result.hpp"
#include "korvo_api_action_engine.h"

namespace korvo::detail {

using Clock = std::chrono::steady_clock;

constexpr std::size_t calls_of_a_session = 512;
constexpr std::size_t most_waiting_events = 4096;

class Call;
struct Session;

/// The context of one asynchronous call of the plain library.
struct Slot {
    Session *session = nullptr;
    Call *call = nullptr;
};

struct Session {
    explicit Session() : slots(calls_of_a_session) {}
    ~Session() { (void)korvo_api_action_engine_initiator_deinit(handle); }
    Session(Session const &) = delete;
    Session &operator=(Session const &) = delete;

    bool isFull() const noexcept { return used == slots.size(); }
    bool isOver() const noexcept { return isFull() && waiting == 0 && senders == 0; }

    class Core *core = nullptr;
    void *handle = nullptr;
    std::vector<Slot> slots;
    std::size_t used = 0;
    std::size_t waiting = 0;  // calls in slots
    std::size_t senders = 0;  // threads inside a plain function
};

/// What runs callables: a call, or a subscription. Its end is the end of all running.
class Recipient {
  public:
    virtual ~Recipient() = default;
    Recipient() = default;
    Recipient(Recipient const &) = delete;
    Recipient &operator=(Recipient const &) = delete;

    /// Destroys the callable, which is not running and will not.
    virtual void discard() noexcept = 0;

    bool is_over = false;
};

/// A callable on its way to the callback thread.
class Job {
  public:
    virtual ~Job() = default;
    Job() = default;
    Job(Job const &) = delete;
    Job &operator=(Job const &) = delete;

    virtual Recipient &recipient() noexcept = 0;
    /// Of a job that runs at most once: marks its recipient's end.
    virtual bool isLast() const noexcept = 0;
    virtual void run() = 0;
    virtual char const *name() const noexcept = 0;

    std::shared_ptr<Job> next;
};

class Call : public Job, public Recipient {
  public:
    Call() noexcept { is_over = true; }  // until it has begun

    /// Does the call end with a callable, or with a future alone?
    virtual bool runsCallable() const noexcept = 0;
    /// Keeps the failure as the result, or fulfils the future with it.
    virtual void fail(Failure const &failure) noexcept = 0;
    /// The engine ends: nobody is told, but a coroutine that waits.
    virtual void endWithEngine(Failure const &failure) noexcept = 0;

    Recipient &recipient() noexcept final { return *this; }
    bool isLast() const noexcept final { return true; }

    // Guarded by the core's mutex.
    bool is_waiting = false;  // for a response or its time-out
    bool is_running = false;
    Slot *slot = nullptr;
    std::list<std::shared_ptr<Call>>::iterator place;
    std::multimap<Clock::time_point, Call *>::iterator deadline;
};

template <typename T>
class TypedCall : public Call {
  public:
    explicit TypedCall(char const *name) noexcept : name_(name) {}

    virtual void settle(Result<T> &&result) noexcept = 0;
    void fail(Failure const &failure) noexcept final { settle(Result<T>(failure)); }
    char const *name() const noexcept final { return name_; }

  private:
    char const *name_;
};

template <typename T>
class FutureCall final : public TypedCall<T> {
  public:
    using TypedCall<T>::TypedCall;

    std::future<Result<T>> future() { return promise_.get_future(); }

    bool runsCallable() const noexcept override { return false; }
    void settle(Result<T> &&result) noexcept override { promise_.set_value(std::move(result)); }
    void endWithEngine(Failure const &failure) noexcept override { this->fail(failure); }
    void run() override {}
    void discard() noexcept override {}

  private:
    std::promise<Result<T>> promise_;
};

template <typename T, typename Callable>
class CallableCall : public TypedCall<T> {
  public:
    template <typename Given>
    CallableCall(char const *name, Given &&callable)
        : TypedCall<T>(name), callable_(std::forward<Given>(callable)) {}

    bool runsCallable() const noexcept override { return true; }
    void settle(Result<T> &&result) noexcept override { result_.emplace(std::move(result)); }
    void endWithEngine(Failure const &) noexcept override { discard(); }
    void run() override {
        // What it holds goes with its run, and not with the last who holds the call.
        struct Guard {
            CallableCall &call;
            ~Guard() { call.discard(); }
        } const guard{*this};
        (*callable_)(std::move(*result_));
    }
    void discard() noexcept override { callable_.reset(); }

  private:
    std::optional<Callable> callable_;
    std::optional<Result<T>> result_;
};

class Listener : public Recipient {
  public:
    explicit Listener(std::function<void(ActionCompleted const &)> &&callable)
        : callable_(std::move(callable)) {}

    void run(ActionCompleted const &event) { callable_(event); }
    void discard() noexcept override { callable_ = nullptr; }

  private:
    std::function<void(ActionCompleted const &)> callable_;
};

class EventJob final : public Job {
  public:
    EventJob(std::shared_ptr<Listener> listener, std::shared_ptr<ActionCompleted const> event) noexcept
        : listener_(std::move(listener)), event_(std::move(event)) {}

    Recipient &recipient() noexcept override { return *listener_; }
    bool isLast() const noexcept override { return false; }
    void run() override { listener_->run(*event_); }
    char const *name() const noexcept override { return "on_action_completed"; }

  private:
    std::shared_ptr<Listener> listener_;
    std::shared_ptr<ActionCompleted const> event_;
};

/// False for a time-out that is none; the plain functions take whole milliseconds in an int.
inline bool toMilliseconds(std::chrono::milliseconds timeout, int &milliseconds) noexcept {
    if (timeout.count() <= 0) {
        return false;
    }
    constexpr int longest = std::numeric_limits<int>::max();
    milliseconds = timeout.count() > longest ? longest : static_cast<int>(timeout.count());
    return true;
}

constexpr char const *not_a_timeout = "a time-out is more than 0 milliseconds";
constexpr char const *zero_byte = "a text holds a zero byte";
constexpr char const *no_response = "no response within the time-out";
constexpr char const *engine_ended = "the engine has ended";

}  // namespace korvo::detail

#endif
