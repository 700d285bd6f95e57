// SPDX-License-Identifier: Apache-2.0
#include "fake_platform/core_calls.h"

#include <list>
#include <map>
#include <memory>
#include <mutex>

#include "fake_platform/recorded.h"
#include "fake_platform/script.h"

namespace fake_platform {

namespace {

struct CoreScript {
    std::vector<CoreCall> calls;
    std::map<std::string, CoreAnswer> answers;
    std::list<std::string> kept_texts;
};

std::mutex mutex;

// There while the mode lasts.
std::unique_ptr<CoreScript> current;

}  // namespace

void recordCore() {
    reset();
    std::lock_guard<std::mutex> const lock(mutex);
    current = std::make_unique<CoreScript>();
}

void endRecordingOfCore() {
    std::lock_guard<std::mutex> const lock(mutex);
    current.reset();
}

bool recordsCore() {
    std::lock_guard<std::mutex> const lock(mutex);
    return current != nullptr;
}

void answer(std::string const &function, CoreAnswer const &answer) {
    std::lock_guard<std::mutex> const lock(mutex);
    current->answers[function] = answer;
}

std::vector<CoreCall> coreCalls() {
    std::lock_guard<std::mutex> const lock(mutex);
    return current->calls;
}

std::optional<CoreAnswer> enterCore(CoreCall const &call) {
    std::optional<CoreAnswer> answer;
    {
        std::lock_guard<std::mutex> const lock(mutex);
        if (current == nullptr) {
            return answer;
        }
        current->calls.push_back(call);
        auto const arranged = current->answers.find(call.function);
        if (arranged != current->answers.end()) {
            answer = arranged->second;
        }
    }
    if (answer.has_value()) {
        raise(answer->thrown);
    }
    return answer;
}

char const *kept(std::string const &text) {
    std::lock_guard<std::mutex> const lock(mutex);
    return current->kept_texts.emplace_back(text).c_str();
}

}  // namespace fake_platform
