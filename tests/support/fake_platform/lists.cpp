// SPDX-License-Identifier: Apache-2.0
// The list functions of the fake libkorvo-core.

#include "fake_platform/lists.h"

#include <functional>
#include <list>
#include <memory>
#include <mutex>

#include "fake_platform/recorded.h"
#include "korvo_core.h"

namespace fake_platform {

namespace {

struct CountedList {
    void *list;
    std::function<void()> release;
    unsigned int releases = 0;
};

std::mutex mutex;

// There while releases are counted.
std::unique_ptr<std::list<CountedList>> counted;

template <typename T>
void count(T **list) {
    std::lock_guard<std::mutex> const lock(mutex);
    if (counted != nullptr && list != nullptr) {
        counted->push_back({list, [list] { releaseList(list); }});
    }
}

/// False for a list that must really be released.
bool countRelease(void *list) {
    std::lock_guard<std::mutex> const lock(mutex);
    if (counted == nullptr) {
        return false;
    }
    for (CountedList &entry : *counted) {
        if (entry.list == list) {
            ++entry.releases;
            return true;
        }
    }
    return false;
}

template <typename T>
T **allocate(char const *function, unsigned int size) {
    std::optional<CoreAnswer> answer;
    if (recordsCore()) {
        answer = enterCore({function, {Value(size)}});
    }
    T **const list = answer.has_value() ? FromValue<T **>::get(answer->returned)
                                        : makeList<T>(size, !std::is_same_v<T, char>);
    count(list);
    return list;
}

template <typename T>
void release(char const *function, T **list) {
    if (recordsCore()) {
        (void)enterCore({function, {Value::ofPointer(list)}});
    }
    if (!countRelease(list)) {
        releaseList(list);
    }
}

}  // namespace

void countReleases() {
    std::lock_guard<std::mutex> const lock(mutex);
    counted = std::make_unique<std::list<CountedList>>();
}

std::vector<unsigned int> releases() {
    std::lock_guard<std::mutex> const lock(mutex);
    std::vector<unsigned int> all;
    for (CountedList const &entry : *counted) {
        all.push_back(entry.releases);
    }
    return all;
}

void endCountingOfReleases() {
    std::lock_guard<std::mutex> const lock(mutex);
    if (counted != nullptr) {
        for (CountedList const &entry : *counted) {
            entry.release();
        }
        counted.reset();
    }
}

}  // namespace fake_platform

#define LIST_FUNCTIONS(kind, T)                               \
    T **korvo_core_alloc_##kind##_array(unsigned int count) { \
        return fake_platform::allocate<T>(__func__, count);   \
    }                                                         \
    void korvo_core_free_##kind##_array(T **list) {           \
        fake_platform::release(__func__, list);               \
    }

LIST_FUNCTIONS(bool, unsigned char)
LIST_FUNCTIONS(uint, unsigned int)
LIST_FUNCTIONS(int, int)
LIST_FUNCTIONS(double, double)
LIST_FUNCTIONS(string, char)
