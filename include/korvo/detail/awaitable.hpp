// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_DETAIL_AWAITABLE_HPP
#define KORVO_DETAIL_AWAITABLE_HPP

// Calls that a coroutine waits for. Included where the compiler has coroutines.

#include <coroutine>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "korvo/detail/operation.hpp"

namespace korvo::detail {

/// A call whose end resumes a coroutine: also when the engine ends, or the coroutine would never be destroyed.
template <typename T, typename Callable>
class ResumingCall final : public CallableCall<T, Callable> {
  public:
    using CallableCall<T, Callable>::CallableCall;

    void endWithEngine(Failure const &failure) noexcept override {
        this->fail(failure);
        this->run();
    }
};

/// What co_await takes. The call begins when the coroutine waits; a coroutine that is destroyed meanwhile cancels it.
template <typename Operation, typename... Inputs>
class [[nodiscard]] Awaitable {
  public:
    using Value = typename Operation::Value;

    Awaitable(std::shared_ptr<Core> core, Timeout const &timeout, Inputs const &...inputs)
        : core_(std::move(core)), timeout_(timeout), inputs_(inputs...) {}

    // NOLINTNEXTLINE(readability-identifier-naming): the language's name
    bool await_ready() const noexcept { return false; }

    // NOLINTNEXTLINE(readability-identifier-naming): the language's name
    bool await_suspend(std::coroutine_handle<> coroutine) {
        if (core_ == nullptr) {
            throw Error(engineMovedAway(Operation::name));
        }
        // Once the call has begun, another thread may resume the coroutine and destroy this object with it.
        std::shared_ptr<Core> const core = core_;
        Timeout const timeout = timeout_;
        std::tuple<Inputs...> const inputs = std::move(inputs_);
        auto resume = [this, coroutine](Result<Value> &&result) {
            result_.emplace(std::move(result));
            coroutine.resume();
        };
        auto const call =
            std::make_shared<ResumingCall<Value, decltype(resume)>>(Operation::name, std::move(resume));
        call_ = PendingCall(core, call);
        bool const has_begun = std::apply(
            [&](Inputs const &...one) { return startCall<Operation>(*core, call, timeout, one...); }, inputs);
        if (!has_begun) {
            result_.emplace(Failure{KORVO_CORE_STATUS_IPC_FAILED, Operation::name, engine_ended});
        }
        return has_begun;
    }

    // NOLINTNEXTLINE(readability-identifier-naming): the language's name
    Result<Value> await_resume() { return std::move(*result_); }

  private:
    std::shared_ptr<Core> core_;
    Timeout timeout_;
    std::tuple<Inputs...> inputs_;
    PendingCall call_;
    std::optional<Result<Value>> result_;
};

}  // namespace korvo::detail

#endif
