// SPDX-License-Identifier: Apache-2.0
#include "support/operation.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <utility>

namespace end_to_end {

std::optional<Answer> PendingAnswer::wait(milliseconds limit) const {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, limit, [&] { return !answers_.empty(); })) {
        return std::nullopt;
    }
    return answers_.front();
}

std::size_t PendingAnswer::count() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return answers_.size();
}

void PendingAnswer::called(char const *, korvo_core_status status, Values results, int) {
    // The results of a call that failed are told by the status alone.
    Answer answer{status, status == KORVO_CORE_STATUS_NO_ERROR ? std::move(results) : Values()};
    if (also) {
        also(answer);
    }
    std::lock_guard<std::mutex> const lock(mutex_);
    answers_.push_back(std::move(answer));
    changed_.notify_all();
}

char const *nameOf(Way way) {
    switch (way) {
        case Way::send:
            return "Send";
        case Way::send_with_timeout:
            return "SendWithTimeout";
        case Way::two_steps_blocking:
            return "TwoStepsBlocking";
        case Way::two_steps_polling:
            return "TwoStepsPolling";
        case Way::two_steps_with_timeout:
            return "TwoStepsWithTimeout";
        case Way::asynchronous:
            return "Asynchronous";
    }
    return "";
}

void PrintTo(Way way, std::ostream *out) {
    *out << nameOf(way);
}

namespace {

constexpr int timeout_ms = static_cast<int>(patience.count());

Answer inTwoSteps(Operation const &operation, Way way, void *handle, char const *target,
                  Values const &inputs) {
    char *request_id = nullptr;
    Answer answer;
    answer.status = operation.nonBlockingSend(handle, target, &request_id, inputs);
    if (answer.status == KORVO_CORE_STATUS_NO_ERROR && way == Way::two_steps_polling) {
        // The service answers in order: when it has answered this query, the response to poll for is there.
        (void)versionQuery().send(handle, target, {});
        answer = operation.receive(handle, 0, target, request_id);
    } else if (answer.status == KORVO_CORE_STATUS_NO_ERROR && way == Way::two_steps_with_timeout) {
        answer = operation.receiveWithTimeout(handle, target, timeout_ms, request_id);
    } else if (answer.status == KORVO_CORE_STATUS_NO_ERROR) {
        answer = operation.receive(handle, 1, target, request_id);
    }
    if (answer.status != KORVO_CORE_STATUS_NO_ERROR) {
        korvo_api_action_engine_free_uuid(request_id);
    }
    return answer;
}

/// Contexts stay valid until the handle has ended, and nobody knows here when that is; so they stay for good.
PendingAnswer &newContext() {
    static std::mutex mutex;
    static std::vector<std::unique_ptr<PendingAnswer>> contexts;
    std::lock_guard<std::mutex> const lock(mutex);
    return *contexts.emplace_back(std::make_unique<PendingAnswer>());
}

Answer asynchronously(Operation const &operation, void *handle, char const *target, Values const &inputs) {
    PendingAnswer &context = newContext();
    Answer answer;
    answer.status = operation.sendAsync(handle, target, inputs, context);
    if (answer.status != KORVO_CORE_STATUS_NO_ERROR) {
        return answer;
    }
    auto const received = context.wait();
    EXPECT_TRUE(received.has_value()) << "no callback of " << operation.name();
    EXPECT_EQ(context.count(), 1U) << operation.name();
    return received.value_or(Answer{KORVO_CORE_STATUS_IPC_FAILED, {}});
}

}  // namespace

Answer call(Operation const &operation, Way way, Client const &client, char const *target,
            Values const &inputs) {
    void *const handle = client.handle();
    switch (way) {
        case Way::send:
            return operation.send(handle, target, inputs);
        case Way::send_with_timeout:
            return operation.sendWithTimeout(handle, target, timeout_ms, inputs);
        case Way::asynchronous:
            return asynchronously(operation, handle, target, inputs);
        case Way::two_steps_blocking:
        case Way::two_steps_polling:
        case Way::two_steps_with_timeout:
            break;
    }
    return inTwoSteps(operation, way, handle, target, inputs);
}

}  // namespace end_to_end
