// SPDX-License-Identifier: Apache-2.0
// The functions of the settings.
#include "korvo_core.h"
#include "settings/document_access.h"
#include "settings/exact_json.h"
#include "settings/settings_store.h"

using namespace platform;

namespace {

template <typename T>
bool isMissing(T) {
    return false;
}

template <typename T>
bool isMissing(T *input) {
    return input == nullptr;
}

/// Why nothing can be kept under the key or in it; empty when it can.
std::string whyRefused(char const *key, Value const &value) {
    if (!exact_json::isUtf8(key)) {
        return "the key is no UTF-8";
    }
    return platform::whyRefused(value);
}

template <korvo_core_settings_type type, typename Input>
korvo_core_status setValue(char const *function, std::optional<Value> Entry::*part, char const *key,
                           Input input) {
    if (key == nullptr || isMissing(input)) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(function, [&] {
        Value value = taken<type>(input);
        if (std::string const why = whyRefused(key, value); !why.empty()) {
            Log(nullptr).error("%s refused a value for the key \"%s\": %s", function, key, why.c_str());
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        return settingsStore().change(function, [&](Document &document) {
            Entry const *const entry = find(document, key);
            if (entry != nullptr && entry->type() != type) {
                return KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE;
            }
            document.entries[key].*part = std::move(value);
            return KORVO_CORE_STATUS_NO_ERROR;
        });
    });
}

korvo_core_status copyKey(char const *function, korvo_core_settings_type type, char const *from,
                          char const *to) {
    if (from == nullptr || to == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(function, [&] {
        if (!exact_json::isUtf8(to)) {
            Log(nullptr).error("%s refused the key \"%s\": it is no UTF-8", function, to);
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        return settingsStore().change(function, [&](Document &document) {
            Entry const *const source = find(document, from);
            korvo_core_status const status = statusOf(source, type);
            if (status != KORVO_CORE_STATUS_NO_ERROR) {
                return status;
            }
            Entry const *const destination = find(document, to);
            if (destination != nullptr && destination->type() != type) {
                return KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE;
            }
            document.entries[to] = Entry(*source);
            return KORVO_CORE_STATUS_NO_ERROR;
        });
    });
}

}  // namespace

korvo_core_status korvo_core_settings_init(void) {
    return guardedCall(__func__, [] {
        settingsStore().open();
        settingsStore().begin();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

korvo_core_status korvo_core_settings_deinit(void) {
    return guardedCall(__func__, [] {
        settingsStore().end();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

#define SCALAR_FUNCTIONS(name, TYPE, Input, Output)                                                      \
    korvo_core_status korvo_core_settings_get_##name##_value(char const *key, Output *value) {           \
        return readValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, settingsStore(), valueOrDefault, key, \
                                                         value);                                         \
    }                                                                                                    \
    korvo_core_status korvo_core_settings_get_default_##name##_value(char const *key, Output *value) {   \
        return readValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, settingsStore(), onlyDefault, key,    \
                                                         value);                                         \
    }                                                                                                    \
    korvo_core_status korvo_core_settings_set_##name##_value(char const *key, Input value) {             \
        return setValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, &Entry::value, key, value);            \
    }                                                                                                    \
    korvo_core_status korvo_core_settings_set_default_##name##_value(char const *key, Input value) {     \
        return setValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, &Entry::fallback, key, value);         \
    }                                                                                                    \
    korvo_core_status korvo_core_settings_copy_##name##_key(char const *from, char const *to) {          \
        return copyKey(__func__, KORVO_CORE_SETTING_TYPE_##TYPE, from, to);                              \
    }
KORVO_SCALAR_SETTINGS(SCALAR_FUNCTIONS)
#undef SCALAR_FUNCTIONS

#define LIST_FUNCTIONS(name, TYPE, Element)                                                                 \
    korvo_core_status korvo_core_settings_get_##name##_value(char const *key, Element ***list,              \
                                                             unsigned int *count) {                         \
        return readValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, settingsStore(), valueOrDefault, key,    \
                                                         list, count);                                      \
    }                                                                                                       \
    korvo_core_status korvo_core_settings_get_default_##name##_value(char const *key, Element ***list,      \
                                                                     unsigned int *count) {                 \
        return readValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, settingsStore(), onlyDefault, key, list, \
                                                         count);                                            \
    }                                                                                                       \
    korvo_core_status korvo_core_settings_set_##name##_value(char const *key, Element **list) {             \
        return setValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, &Entry::value, key, list);                \
    }                                                                                                       \
    korvo_core_status korvo_core_settings_set_default_##name##_value(char const *key, Element **list) {     \
        return setValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, &Entry::fallback, key, list);             \
    }                                                                                                       \
    korvo_core_status korvo_core_settings_copy_##name##_key(char const *from, char const *to) {             \
        return copyKey(__func__, KORVO_CORE_SETTING_TYPE_##TYPE, from, to);                                 \
    }
KORVO_LIST_SETTINGS(LIST_FUNCTIONS)
#undef LIST_FUNCTIONS

char **korvo_core_settings_get_all_keys(void) {
    return keysOf(__func__, settingsStore(), "");
}

char **korvo_core_settings_get_keys_starting_with(char const *prefix) {
    return keysOf(__func__, settingsStore(), prefix);
}

korvo_core_status korvo_core_settings_get_type(char const *key, korvo_core_settings_type *type) {
    return typeOfKey(__func__, settingsStore(), key, type);
}

unsigned char korvo_core_settings_does_key_exist(char const *key) {
    return isKey(__func__, settingsStore(), key);
}

korvo_core_status korvo_core_settings_delete_key(char const *key) {
    if (key == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(__func__, [&] {
        return settingsStore().change("korvo_core_settings_delete_key", [&](Document &document) {
            return document.entries.erase(key) == 1 ? KORVO_CORE_STATUS_NO_ERROR
                                                    : KORVO_CORE_STATUS_SETTING_NOT_PRESENT;
        });
    });
}

korvo_core_status korvo_core_settings_get_and_set_version(unsigned int *old_version, unsigned int version) {
    if (old_version == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(__func__, [&] {
        unsigned int before = 0;
        korvo_core_status const status =
            settingsStore().change("korvo_core_settings_get_and_set_version", [&](Document &document) {
                before = document.version;
                document.previous_version = before;
                document.version = version;
                return KORVO_CORE_STATUS_NO_ERROR;
            });
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            *old_version = before;
        }
        return status;
    });
}

korvo_core_status korvo_core_settings_get_versions(unsigned int *version, unsigned int *previous_version) {
    if (version == nullptr || previous_version == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(__func__, [&] {
        auto const snapshot = settingsStore().current();
        *version = snapshot->document().version;
        *previous_version = snapshot->document().previous_version;
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

korvo_core_status korvo_core_settings_is_new_file(unsigned char *is_new) {
    if (is_new == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return guardedCall(__func__, [&] {
        (void)settingsStore().current();
        *is_new = settingsStore().isNew() ? 1 : 0;
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}
