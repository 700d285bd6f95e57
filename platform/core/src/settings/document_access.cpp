// SPDX-License-Identifier: Apache-2.0
#include "settings/document_access.h"

namespace platform {

char **keysOf(char const *function, DocumentCache &source, char const *prefix) {
    if (prefix == nullptr) {
        return nullptr;
    }
    char **list = nullptr;
    unsigned int count = 0;
    (void)guardedCall(function, [&] {
        auto const snapshot = source.current();
        auto const &entries = snapshot->document().entries;
        std::string_view const wanted = prefix;
        std::vector<std::string> keys;
        for (auto entry = entries.lower_bound(wanted);
             entry != entries.end() && entry->first.compare(0, wanted.size(), wanted) == 0; ++entry) {
            keys.push_back(entry->first);
        }
        give(keys, &list, &count);
        return KORVO_CORE_STATUS_NO_ERROR;
    });
    return list;
}

korvo_core_status typeOfKey(char const *function, DocumentCache &source, char const *key,
                            korvo_core_settings_type *type) {
    if (key == nullptr || type == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(function, [&] {
        auto const snapshot = source.current();
        Entry const *const entry = find(snapshot->document(), key);
        if (entry == nullptr) {
            return KORVO_CORE_STATUS_SETTING_NOT_PRESENT;
        }
        *type = entry->type();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

unsigned char isKey(char const *function, DocumentCache &source, char const *key) {
    korvo_core_settings_type ignored = KORVO_CORE_SETTING_TYPE_UNKNOWN;
    return typeOfKey(function, source, key, &ignored) == KORVO_CORE_STATUS_NO_ERROR ? 1 : 0;
}

}  // namespace platform
