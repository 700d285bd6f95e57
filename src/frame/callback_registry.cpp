// SPDX-License-Identifier: Apache-2.0
#include "frame/callback_registry.h"

AnyCallbackRegistry::Entry const *AnyCallbackRegistry::find(char const *request_id) const {
    auto const entry = entries_.find(request_id);
    return entry != entries_.end() ? &entry->second : nullptr;
}

void AnyCallbackRegistry::insert(char const *request_id, AnyCallback callback, void *context) {
    entries_[request_id] = Entry(callback, context);
}

void AnyCallbackRegistry::cancel(AnyCallback callback, void *context) {
    Entry const match(callback, context);
    for (auto entry = entries_.begin(); entry != entries_.end();) {
        bool erase_next = entry->second == match;
        ++entry;
        // On purpose: the entry behind a match goes and the match stays. Callers rely on a registration that they
        // cancelled still being called; docs/oddities.md tells them so.
        while (erase_next && entry != entries_.end()) {
            erase_next = entry->second == match;
            entry = entries_.erase(entry);
        }
    }
}
