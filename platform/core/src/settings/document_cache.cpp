// SPDX-License-Identifier: Apache-2.0
#include "settings/document_cache.h"

#include <mutex>
#include <utility>

#include "settings/state_folder.h"

namespace platform {

namespace {

using Guard = std::lock_guard<process::ForkSafeMutex>;

}  // namespace

void DocumentCache::begin() {
    Guard const guard(mutex_);
    ++users_;
}

void DocumentCache::end() {
    std::shared_ptr<Snapshot const> dropped;
    Guard const guard(mutex_);
    if (users_ > 1) {
        --users_;
        return;
    }
    users_ = 0;
    folder_.clear();
    dropped.swap(held_);
    found_no_file_ = false;
}

std::string DocumentCache::folder() {
    Guard const guard(mutex_);
    if (folder_.empty()) {
        folder_ = stateFolder();
    }
    return folder_;
}

std::shared_ptr<Snapshot const> DocumentCache::current() {
    std::string const file = path();
    std::shared_ptr<Snapshot const> found;
    {
        Guard const guard(mutex_);
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
    Guard const guard(mutex_);
    held_.swap(snapshot);
    found_no_file_ = found_no_file_ || found_no_file;
}

bool DocumentCache::hasFoundNoFile() {
    Guard const guard(mutex_);
    return found_no_file_;
}

}  // namespace platform
