// SPDX-License-Identifier: Apache-2.0
#include "base/process.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <system_error>
#include <utility>
#include <vector>

#include "base/mutex.h"

namespace platform::process {

namespace {

std::atomic<unsigned int> current_generation{0};

struct State {
    // The first lock that a fork takes, and held by nobody while it takes another one.
    Mutex mutex;
    std::vector<ForkSafeMutex *> mutexes KORVO_GUARDED_BY(mutex);
    std::vector<int> descriptors KORVO_GUARDED_BY(mutex);
};

/// Lives as long as the process: a child closes descriptors at any time, also while the parent exits.
State &state();

// A fork takes the locks in one function and gives them back in another, which the analysis cannot follow.

void beforeFork() KORVO_NO_ANALYSIS {
    State &shared = state();
    shared.mutex.lock();
    for (ForkSafeMutex *const mutex : shared.mutexes) {
        mutex->lock();
    }
}

void releaseAfterFork(State &shared) KORVO_NO_ANALYSIS {
    for (auto mutex = shared.mutexes.rbegin(); mutex != shared.mutexes.rend(); ++mutex) {
        (*mutex)->unlock();
    }
    shared.mutex.unlock();
}

void afterForkInParent() {
    releaseAfterFork(state());
}

void afterForkInChild() KORVO_NO_ANALYSIS {
    State &shared = state();
    current_generation.fetch_add(1);
    for (int const descriptor : shared.descriptors) {
        (void)close(descriptor);
    }
    shared.descriptors.clear();
    releaseAfterFork(shared);
}

State &state() {
    static State *const shared = [] {
        auto *const made = new State;
        int const failure = pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
        if (failure != 0) {
            delete made;
            throw std::system_error(failure, std::generic_category(), "pthread_atfork");
        }
        return made;
    }();
    return *shared;
}

}  // namespace

unsigned int generation() noexcept {
    return current_generation.load(std::memory_order_relaxed);
}

void endOrphan(unsigned int generation_of_thread) noexcept {
    if (generation_of_thread != generation()) {
        _exit(0);
    }
}

ForkSafeMutex::ForkSafeMutex() {
    State &shared = state();
    MutexLock const lock(shared.mutex);
    shared.mutexes.push_back(this);
}

Descriptor::Registration::Registration() KORVO_NO_ANALYSIS : lock_(state().mutex) {
    std::vector<int> &descriptors = state().descriptors;
    if (descriptors.size() == descriptors.capacity()) {
        descriptors.reserve(2 * descriptors.size() + 16);
    }
}

void Descriptor::Registration::add(int descriptor) noexcept KORVO_NO_ANALYSIS {
    state().descriptors.push_back(descriptor);
}

Descriptor::Descriptor(Descriptor &&other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), generation_(other.generation_) {}

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept {
    if (this != &other) {
        reset();
        descriptor_ = std::exchange(other.descriptor_, -1);
        generation_ = other.generation_;
    }
    return *this;
}

void Descriptor::reset() noexcept {
    int const descriptor = std::exchange(descriptor_, -1);
    // An inherited number was closed right after the fork and may name something else by now.
    if (descriptor < 0 || generation_ != generation()) {
        return;
    }
    State &shared = state();
    // Closed under the lock, so that no child closes the same number again after it has been reused.
    MutexLock const lock(shared.mutex);
    auto const place = std::find(shared.descriptors.begin(), shared.descriptors.end(), descriptor);
    if (place != shared.descriptors.end()) {
        *place = shared.descriptors.back();
        shared.descriptors.pop_back();
    }
    (void)close(descriptor);
}

}  // namespace platform::process
