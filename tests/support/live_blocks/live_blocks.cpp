// SPDX-License-Identifier: Apache-2.0
#include "live_blocks/live_blocks.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KORVO_SANITIZER_ALLOCATOR
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KORVO_SANITIZER_ALLOCATOR
#endif

#if defined(KORVO_SANITIZER_ALLOCATOR)
extern "C" {
// Of every sanitizer's run-time library; not every compiler comes with the header.
int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(void const volatile *address,
                                                                std::size_t size),
                                              void (*released)(void const volatile *address));
}
#else
extern "C" {
// The C library's own allocator, which the functions at the end of this file stand before.
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void __libc_free(void *block);
}
#endif

namespace {

// A fixed table: nothing may be allocated while an allocation is being noted.
constexpr std::size_t capacity = std::size_t{1} << 12;
live_blocks::Block blocks[capacity];
std::size_t seen = 0;
bool overflow = false;

std::atomic_flag busy = ATOMIC_FLAG_INIT;
std::atomic<bool> recording{false};
std::atomic<bool> follows_threads{false};
thread_local bool recorded_thread = false;
thread_local std::size_t until_failure = 0;
thread_local bool has_failed = false;

// Of FailingAllocations: which of the recorded threads' allocations fail, from `first_failing` on and before `failing_end`.
std::atomic<bool> are_failing{false};
std::atomic<std::size_t> counted{0};
std::atomic<std::size_t> failed_so_far{0};
std::atomic<void (*)()> failure_hook{nullptr};
std::atomic<bool (*)()> thread_refusal{nullptr};
std::size_t first_failing = 0;
std::size_t failing_end = 0;

class Busy {
  public:
    Busy() {
        while (busy.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~Busy() { busy.clear(std::memory_order_release); }
    Busy(Busy const &) = delete;
    Busy &operator=(Busy const &) = delete;
};

std::size_t placeOf(void const *address) {
    return (reinterpret_cast<std::uintptr_t>(address) >> 4U) % capacity;
}

// Freed entries keep their address with this size, so that walks over them do not end early.
constexpr std::size_t freed = SIZE_MAX;

void noteAllocation(void *address, std::size_t size) {
    if (!recording.load(std::memory_order_relaxed) || !recorded_thread || address == nullptr) {
        return;
    }
    Busy const lock;
    ++seen;
    std::size_t place = placeOf(address);
    for (std::size_t tries = 0; tries < capacity; ++tries, place = (place + 1) % capacity) {
        if (blocks[place].address == nullptr || blocks[place].size == freed) {
            blocks[place] = {address, size};
            return;
        }
    }
    overflow = true;
}

void noteRelease(void const *address) {
    if (!recording.load(std::memory_order_relaxed) || address == nullptr) {
        return;
    }
    Busy const lock;
    std::size_t place = placeOf(address);
    for (std::size_t tries = 0; tries < capacity; ++tries, place = (place + 1) % capacity) {
        if (blocks[place].address == nullptr) {
            return;
        }
        if (blocks[place].address == address && blocks[place].size != freed) {
            blocks[place].size = freed;
            return;
        }
    }
}

#if defined(KORVO_SANITIZER_ALLOCATOR)

void installHooks() {
    static bool const installed =
        __sanitizer_install_malloc_and_free_hooks(
            [](void const volatile *address, std::size_t size) {
                noteAllocation(const_cast<void *>(address), size);
            },
            [](void const volatile *address) { noteRelease(const_cast<void const *>(address)); }) != 0;
    if (!installed) {
        throw std::runtime_error("the sanitizer takes no allocation hooks");
    }
}

#else

void installHooks() {}

bool failsInProcess() {
    if (!recorded_thread || !are_failing.load(std::memory_order_acquire)) {
        return false;
    }
    std::size_t const number = counted.fetch_add(1) + 1;
    if (number < first_failing || number >= failing_end) {
        return false;
    }
    failed_so_far.fetch_add(1);
    if (auto const hook = failure_hook.load()) {
        live_blocks::Unnoticed const unnoticed;
        hook();
    }
    return true;
}

bool failsInThread() {
    if (until_failure == 0 || --until_failure != 0) {
        return false;
    }
    has_failed = true;
    return true;
}

bool failsNow() {
    if (!failsInThread() && !failsInProcess()) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

/// What a new thread runs, with what it has from the one that started it.
struct Start {
    void *(*function)(void *);
    void *argument;
    bool recorded;
};

void *begin(void *block) {
    Start const start = *static_cast<Start *>(block);
    __libc_free(block);
    recorded_thread = start.recorded;
    return start.function(start.argument);
}

#endif

}  // namespace

namespace live_blocks {

Recording::Recording(Threads threads) {
    installHooks();
    follows_threads = threads == Threads::started;
    {
        Busy const lock;
        for (Block &block : blocks) {
            block = {nullptr, 0};
        }
        seen = 0;
        overflow = false;
    }
    recorded_thread = true;
    recording.store(true);
}

Recording::~Recording() {
    recording.store(false);
    recorded_thread = false;
}

std::vector<Block> Recording::end() {
    recording.store(false);
    recorded_thread = false;
    if (overflow) {
        throw std::length_error("the table of live blocks is too small");
    }
    std::vector<Block> left;
    for (Block const &block : blocks) {
        if (block.address != nullptr && block.size != freed) {
            left.push_back(block);
        }
    }
    return left;
}

std::size_t Recording::allocations() const {
    Busy const lock;
    return seen;
}

bool isRecorded() {
    return recorded_thread;
}

Unnoticed::Unnoticed() : recorded_(recorded_thread), until_failure_(until_failure) {
    recorded_thread = false;
    until_failure = 0;
}

Unnoticed::~Unnoticed() {
    recorded_thread = recorded_;
    until_failure = until_failure_;
}

void onFailure(void (*hook)()) {
    failure_hook = hook;
}

void refuseThreads(bool (*refuses)()) {
    thread_refusal = refuses;
}

bool canFail() {
#if defined(KORVO_SANITIZER_ALLOCATOR)
    return false;
#else
    return true;
#endif
}

namespace detail {

void arrangeFailure(std::size_t nth) {
    until_failure = nth;
    has_failed = false;
}

bool hasFailed() {
    return has_failed;
}

}  // namespace detail

void stopFailing() {
    until_failure = 0;
}

FailingAllocations::FailingAllocations(std::size_t nth, std::size_t count) {
    counted = 0;
    failed_so_far = 0;
    first_failing = nth;
    failing_end = count > SIZE_MAX - nth ? SIZE_MAX : nth + count;
    are_failing.store(true, std::memory_order_release);
}

void FailingAllocations::stop() {
    are_failing = false;
}

std::size_t FailingAllocations::failed() const {
    return failed_so_far;
}

}  // namespace live_blocks

#if !defined(KORVO_SANITIZER_ALLOCATOR)

#pragma GCC diagnostic ignored "-Wmissing-declarations"

extern "C" {

__attribute__((visibility("default"))) void *malloc(std::size_t size) {
    if (failsNow()) {
        return nullptr;
    }
    void *const block = __libc_malloc(size);
    noteAllocation(block, size);
    return block;
}

__attribute__((visibility("default"))) void *calloc(std::size_t count, std::size_t size) {
    if (failsNow()) {
        return nullptr;
    }
    void *const block = __libc_calloc(count, size);
    noteAllocation(block, count * size);
    return block;
}

__attribute__((visibility("default"))) void *realloc(void *block, std::size_t size) {
    if (failsNow()) {
        return nullptr;
    }
    noteRelease(block);
    void *const moved = __libc_realloc(block, size);
    noteAllocation(moved, size);
    return moved;
}

__attribute__((visibility("default"))) void free(void *block) {
    noteRelease(block);
    __libc_free(block);
}

// A thread is recorded when the one that starts it is, if the recording wants that.
__attribute__((visibility("default"))) int pthread_create(pthread_t *thread, pthread_attr_t const *attributes,
                                                          void *(*function)(void *), void *argument) {
    static auto const create =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    if (!follows_threads) {
        return create(thread, attributes, function, argument);
    }
    auto const refuses = thread_refusal.load();
    bool const is_refused = recorded_thread && refuses != nullptr && refuses();
    void *const block = is_refused || failsNow() ? nullptr : __libc_malloc(sizeof(Start));
    if (block == nullptr) {
        return EAGAIN;
    }
    *static_cast<Start *>(block) = {function, argument, recorded_thread};
    int const failure = create(thread, attributes, begin, block);
    if (failure != 0) {
        __libc_free(block);
    }
    return failure;
}

}  // extern "C"

#endif
