// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_DOCUMENT_ACCESS_H
#define KORVO_PLATFORM_DOCUMENT_ACCESS_H

// Reading, for settings and configuration alike.

#include "base/guarded_call.h"
#include "settings/document_cache.h"
#include "settings/setting_kinds.h"

namespace platform {

/// Which value of an entry is asked for; NULL when there is none.
using Part = Value const *(*)(Entry const &entry);

inline Value const *valueOrDefault(Entry const &entry) {
    return entry.value ? &*entry.value : &*entry.fallback;
}

inline Value const *onlyDefault(Entry const &entry) {
    return entry.fallback ? &*entry.fallback : nullptr;
}

/// The entry of a key; NULL when there is none.
inline Entry const *find(Document const &document, char const *key) {
    auto const found = document.entries.find(key);
    return found != document.entries.end() ? &found->second : nullptr;
}

/// Status 5 or 6 where a key cannot be used as one of `type`, else 0.
inline korvo_core_status statusOf(Entry const *entry, korvo_core_settings_type type) {
    if (entry == nullptr) {
        return KORVO_CORE_STATUS_SETTING_NOT_PRESENT;
    }
    return entry->type() == type ? KORVO_CORE_STATUS_NO_ERROR : KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE;
}

template <korvo_core_settings_type type, typename... Output>
korvo_core_status readValue(char const *function, DocumentCache &source, Part part, char const *key,
                            Output... outputs) {
    if (key == nullptr || ((outputs == nullptr) || ...)) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(function, [&] {
        auto const snapshot = source.current();
        Entry const *const entry = find(snapshot->document(), key);
        korvo_core_status const status = statusOf(entry, type);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            return status;
        }
        Value const *const value = part(*entry);
        if (value == nullptr) {
            return KORVO_CORE_STATUS_SETTING_NOT_PRESENT;
        }
        give(std::get<type>(*value), outputs...);
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

/// The keys that begin with `prefix`; NULL for a NULL prefix and after a failure.
char **keysOf(char const *function, DocumentCache &source, char const *prefix);

korvo_core_status typeOfKey(char const *function, DocumentCache &source, char const *key,
                            korvo_core_settings_type *type);

unsigned char isKey(char const *function, DocumentCache &source, char const *key);

}  // namespace platform

#endif
