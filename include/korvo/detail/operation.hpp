// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_DETAIL_OPERATION_HPP
#define KORVO_DETAIL_OPERATION_HPP

// Between an operation and its calls: how its forms begin, and what becomes of its responses.

#include <chrono>
#include <exception>
#include <memory>
#include <type_traits>
#include <utility>

#include "korvo/detail/core.hpp"

namespace korvo {
namespace detail {

constexpr Failure engineMovedAway(char const *operation) noexcept {
    return {KORVO_CORE_STATUS_INVALID_PARAMS, operation, "the engine was moved away"};
}

/// What the operation's make() makes of the results, or why it could not.
template <typename Operation, typename... Results>
Result<typename Operation::Value> resultOf(korvo_core_status status, Results... results) noexcept {
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return Failure{status, Operation::name, nullptr};
    }
    if constexpr (std::is_void_v<typename Operation::Value>) {
        return {};
    } else {
        try {
            return Operation::make(results...);
        } catch (ListsDiffer const &) {
            return Failure{
                KORVO_CORE_STATUS_IPC_FAILED, Operation::name, "lists that belong together differ in length"};
        } catch (std::exception const &) {
            return Failure{KORVO_CORE_STATUS_ALLOC_FAILED, Operation::name, nullptr};
        }
    }
}

/// A response, on a messaging thread.
template <typename Operation, typename... Results>
void answer(void *context, korvo_core_status status, Results... results) noexcept {
    Slot &slot = *static_cast<Slot *>(context);
    Core &core = *slot.session->core;
    if (std::shared_ptr<Call> const call = core.claim(slot)) {
        static_cast<TypedCall<typename Operation::Value> &>(*call).settle(
            resultOf<Operation>(status, results...));
        core.deliver(call);
    }
}

template <typename Operation, typename... Inputs>
Result<typename Operation::Value> call(Core *core, Timeout const &timeout, Inputs const &...inputs) noexcept {
    if (core == nullptr) {
        return engineMovedAway(Operation::name);
    }
    int milliseconds = 0;
    if (!toMilliseconds(core->timeout(timeout), milliseconds)) {
        return Failure{KORVO_CORE_STATUS_INVALID_PARAMS, Operation::name, not_a_timeout};
    }
    if (!Operation::isSendable(inputs...)) {
        return Failure{KORVO_CORE_STATUS_INVALID_PARAMS, Operation::name, zero_byte};
    }
    try {
        return Operation::send(core->handle(), core->target(), milliseconds, inputs...);
    } catch (std::exception const &) {
        return Failure{KORVO_CORE_STATUS_ALLOC_FAILED, Operation::name, nullptr};
    }
}

template <typename Operation, typename... Inputs>
bool startCall(
    Core &core, std::shared_ptr<Call> const &call, Timeout const &timeout, Inputs const &...inputs) {
    int milliseconds = 0;
    if (!toMilliseconds(core.timeout(timeout), milliseconds)) {
        return core.startFailed(call, {KORVO_CORE_STATUS_INVALID_PARAMS, Operation::name, not_a_timeout});
    }
    if (!Operation::isSendable(inputs...)) {
        return core.startFailed(call, {KORVO_CORE_STATUS_INVALID_PARAMS, Operation::name, zero_byte});
    }
    return core.start(call, std::chrono::milliseconds(milliseconds), [&](void *handle, Slot *slot) {
        return Operation::sendAsync(handle, core.target(), slot, inputs...);
    });
}

}  // namespace detail

/// An asynchronous call on its way to a callable. Destroying it cancels the call, as cancel() does.
class [[nodiscard]] PendingCall {
  public:
    PendingCall() noexcept = default;
    PendingCall(std::shared_ptr<detail::Core> core, std::shared_ptr<detail::Call> call) noexcept
        : core_(std::move(core)), call_(std::move(call)) {}
    PendingCall(PendingCall &&other) noexcept = default;
    PendingCall &operator=(PendingCall &&other) noexcept {
        if (this != &other) {
            cancel();
            core_ = std::move(other.core_);
            call_ = std::move(other.call_);
        }
        return *this;
    }
    ~PendingCall() { cancel(); }

    /// Returns when the callable cannot run any more; waits for it where it is just running, unless on this very thread.
    /// The service may carry the command out all the same. Afterwards nothing is left to cancel.
    void cancel() noexcept {
        if (call_ != nullptr) {
            core_->cancel(*call_);
            detach();
        }
    }

    /// Lets the call go its way: the callable runs when the response, or the end of its time, comes.
    void detach() noexcept {
        call_.reset();
        core_.reset();
    }

  private:
    std::shared_ptr<detail::Core> core_;
    std::shared_ptr<detail::Call> call_;
};

/// A callable that gets events. Its end is the end of the subscription, as by cancel().
class [[nodiscard]] Subscription {
  public:
    Subscription() noexcept = default;
    Subscription(std::shared_ptr<detail::Core> core, std::shared_ptr<detail::Listener> listener) noexcept
        : core_(std::move(core)), listener_(std::move(listener)) {}
    Subscription(Subscription &&other) noexcept = default;
    Subscription &operator=(Subscription &&other) noexcept {
        if (this != &other) {
            cancel();
            core_ = std::move(other.core_);
            listener_ = std::move(other.listener_);
        }
        return *this;
    }
    ~Subscription() { cancel(); }

    /// Returns when the callable cannot run any more; waits for it where it is just running, unless on this very thread.
    void cancel() noexcept {
        if (listener_ != nullptr) {
            core_->cancel(listener_);
            listener_.reset();
            core_.reset();
        }
    }

  private:
    std::shared_ptr<detail::Core> core_;
    std::shared_ptr<detail::Listener> listener_;
};

namespace detail {

// The core is held by each call: a callable may end the engine before the call has returned.
template <typename Operation, typename... Inputs>
auto callFuture(std::shared_ptr<Core> core, Timeout const &timeout, Inputs const &...inputs) {
    if (core == nullptr) {
        throw Error(engineMovedAway(Operation::name));
    }
    auto const call = std::make_shared<FutureCall<typename Operation::Value>>(Operation::name);
    auto future = call->future();
    if (!startCall<Operation>(*core, call, timeout, inputs...)) {
        call->fail({KORVO_CORE_STATUS_IPC_FAILED, Operation::name, engine_ended});
    }
    return future;
}

template <typename Operation, typename Callable, typename... Inputs>
PendingCall callAsync(
    std::shared_ptr<Core> core, Timeout const &timeout, Callable &&callable, Inputs const &...inputs) {
    using Stored = std::decay_t<Callable>;
    using Value = typename Operation::Value;
    static_assert(
        std::is_invocable_v<Stored &, Result<Value>>,
        "the callable of an asynchronous call takes the operation's korvo::Result");
    if (core == nullptr) {
        throw Error(engineMovedAway(Operation::name));
    }
    auto const call =
        std::make_shared<CallableCall<Value, Stored>>(Operation::name, std::forward<Callable>(callable));
    (void)startCall<Operation>(*core, call, timeout, inputs...);
    return {std::move(core), call};
}

}  // namespace detail
}  // namespace korvo

#endif
