// SPDX-License-Identifier: Apache-2.0
#include "settings/document_cache.h"

#include <utility>

#include "base/mutex.h"
#include "settings/state_folder.h"

namespace platform {

void DocumentCache::begin() {
    MutexLock const lock(mutex_);
    ++users_;
}

void DocumentCache::end() {
    std::shared_ptr<Snapshot const> dropped;
    MutexLock const lock(mutex_);
    if (users_ > 1) {
        --users_;
        return;
    }
    users_ = 0;
    std::string().swap(folder_);
    dropped.swap(held_);
    found_no_file_ = false;
}

std::string DocumentCache::folder() {
    MutexLock const lock(mutex_);
    if (folder_.empty()) {
        folder_ = stateFolder();
    }
    return folder_;
}

std::shared_ptr<Snapshot const> DocumentCache::current() {
    std::string const file = path();
    std::shared_ptr<Snapshot const> found;
    {
        MutexLock const lock(mutex_);
        found = held_;
    }
    if (found == nullptr || !found->isCurrent(file)) {
        found = Snapshot::read(file);
        hold(found, !found->hasFile());
    }
    return found;
}

void DocumentCache::hold(std::shared_ptr<Snapshot const> snapshot, bool found_no_file) {
    // The parameter takes the former one out of the lock's reach.
    MutexLock const lock(mutex_);
    held_.swap(snapshot);
    found_no_file_ = found_no_file_ || found_no_file;
}

bool DocumentCache::hasFoundNoFile() {
    MutexLock const lock(mutex_);
    return found_no_file_;
}

}  // namespace platform
