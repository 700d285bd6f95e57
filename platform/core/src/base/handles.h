// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_HANDLES_H
#define KORVO_PLATFORM_HANDLES_H

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>

#include "base/mutex.h"
#include "base/process.h"

namespace platform {

/// What a handle names: handles are numbers and never addresses, so a closed or invented one is noticed, and
/// an object lives until the last call that uses it has returned.
template <typename Object>
class HandleTable {
  public:
    struct Found {
        std::shared_ptr<Object> object;
        /// The object was made by the process that this one was forked from: its locks may be held for ever.
        bool inherited = false;
    };

    void *add(std::shared_ptr<Object> object) {
        MutexLock const lock(mutex_);
        std::uintptr_t const number = next_;
        entries_.emplace(number, Entry{std::move(object), process::generation()});
        // A multiple of 16 looks like an address to people who print it and to checks of alignment.
        next_ += 16;
        return reinterpret_cast<void *>(number);
    }

    Found find(void *handle) {
        MutexLock const lock(mutex_);
        auto const entry = entries_.find(reinterpret_cast<std::uintptr_t>(handle));
        return entry == entries_.end() ? Found() : lookAt(entry->second);
    }

    Found remove(void *handle) {
        MutexLock const lock(mutex_);
        auto const entry = entries_.find(reinterpret_cast<std::uintptr_t>(handle));
        if (entry == entries_.end()) {
            return Found();
        }
        Found found = lookAt(entry->second);
        if (!found.inherited) {
            entries_.erase(entry);
        }
        return found;
    }

  private:
    struct Entry {
        std::shared_ptr<Object> object;
        unsigned int generation;
    };

    static Found lookAt(Entry const &entry) {
        return Found{entry.object, entry.generation != process::generation()};
    }

    process::ForkSafeMutex mutex_;
    std::unordered_map<std::uintptr_t, Entry> entries_ KORVO_GUARDED_BY(mutex_);
    std::uintptr_t next_ KORVO_GUARDED_BY(mutex_) = 0x1000;
};

}  // namespace platform

#endif
