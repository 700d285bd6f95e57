// SPDX-License-Identifier: Apache-2.0
// Reading an asynchronous response and calling the user's callback, for every operation.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>

#include "frame/function_name.h"
#include "frame/initiator.h"
#include "operations/operations.h"

using operations::Kind;
using operations::Member;
using operations::Operation;

namespace {

constexpr std::size_t countOf(Member const *members) {
    std::size_t count = 0;
    while (members[count].kind != Kind::none) {
        ++count;
    }
    return count;
}

constexpr std::size_t mostResults() {
    std::size_t most = countOf(operations::version_query.results);
    for (Operation const &operation : operations::all) {
        most = std::max(most, countOf(operation.results));
    }
    return most;
}

/// The results of one response. The lists end with it, whichever way the response goes; the texts do not: they
/// belong to the callback from the moment it is called.
class Results {
  public:
    Results() = default;
    Results(Results const &) = delete;
    Results &operator=(Results const &) = delete;

    ~Results() {
        for (Result &result : results_) {
            result.texts.freeList();
            result.numbers.freeList();
        }
    }

    Result &operator[](std::size_t place) { return results_[place]; }
    Result const *data() const { return results_; }

    void freeTexts() {
        for (Result &result : results_) {
            std::free(result.text);
        }
    }

  private:
    Result results_[mostResults()];
};

}  // namespace

void IAction_engineInitiator::handleResponse(Operation const &operation, AnyCallbackRegistry &registry,
                                             char *target, char *request_id, json::Object const &response,
                                             Deliver deliver) noexcept {
    try {
        deliverResponse(operation, registry, target, request_id, response, deliver);
    } catch (...) {
        logException(FunctionName::responseCallback(operation).c_str());
    }
}

void IAction_engineInitiator::deliverResponse(Operation const &operation, AnyCallbackRegistry &registry,
                                              char *target, char *request_id, json::Object const &response,
                                              Deliver deliver) {
    // Before the lock, so that the lists are released after it.
    Results results;
    MutexLock const lock(registry.mutex());

    AnyCallbackRegistry::Entry const *const entry = registry.find(request_id);
    if (entry == nullptr) {
        IPC_LOG_WARNING("received a callback for %s but no initiator callback was registered",
                        operation.method);
        return;
    }

    json::Number const &number = response["status"].CastTo<json::Number>();
    auto const status = static_cast<korvo_core_status>(json::ToUnsigned(number.value()));
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        std::size_t place = 0;
        for (Member const *member = operation.results; member->kind != Kind::none; ++member, ++place) {
            // On purpose: when this fails or throws, texts copied before it are left behind.
            korvo_core_status const conversion =
                readMember(response, *member, results[place].outPointer(member->kind));
            if (conversion != KORVO_CORE_STATUS_NO_ERROR) {
                IPC_LOG_WARNING(member->kind == Kind::numbers ? "%s failed converting unsigned int array (%d)"
                                                              : "%s failed converting char array (%d)",
                                FunctionName::responseCallback(operation).c_str(),
                                static_cast<int>(conversion));
                return;
            }
        }
    }

    // The one answer that is of interest to the library itself, whether or not anybody is called.
    if (&operation == &operations::version_query && status == KORVO_CORE_STATUS_NO_ERROR) {
        reportVersionMismatch(results[0].number, results[1].number);
    }

    auto const [callback, context] = *entry;
    if (callback == nullptr) {
        // A caller may send without caring for the answer; then nobody else would free the texts.
        results.freeTexts();
        return;
    }
    deliver(callback, target, status, results.data(), context);
}
