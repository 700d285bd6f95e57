// SPDX-License-Identifier: Apache-2.0
// The functions of the configuration.
#include "korvo_core.h"
#include "settings/document_access.h"

using namespace platform;

namespace {

class Configuration final : public DocumentCache {
  public:
    Configuration() : DocumentCache("configuration.json") {}

    /// A damaged file stays where it is: it is not this program's.
    std::shared_ptr<Snapshot const> current() override {
        try {
            return DocumentCache::current();
        } catch (DamagedDocument const &fault) {
            throw std::runtime_error("the configuration " + path() + " is damaged: " + fault.what() +
                                     "; mend it, or move it away");
        }
    }
};

Configuration &configuration() {
    // As long as the process: other objects use the configuration while they are destroyed.
    static auto *const made = new Configuration;
    return *made;
}

}  // namespace

korvo_core_status korvo_core_configuration_init(void) {
    return guardedCall(__func__, [] {
        (void)configuration().current();
        configuration().begin();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

korvo_core_status korvo_core_configuration_deinit(void) {
    return guardedCall(__func__, [] {
        configuration().end();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

#define SCALAR_FUNCTION(name, TYPE, Input, Output)                                                       \
    korvo_core_status korvo_core_configuration_get_##name##_value(char const *key, Output *value) {      \
        return readValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, configuration(), valueOrDefault, key, \
                                                         value);                                         \
    }
KORVO_SCALAR_SETTINGS(SCALAR_FUNCTION)
#undef SCALAR_FUNCTION

#define LIST_FUNCTION(name, TYPE, Element)                                                               \
    korvo_core_status korvo_core_configuration_get_##name##_value(char const *key, Element ***list,      \
                                                                  unsigned int *count) {                 \
        return readValue<KORVO_CORE_SETTING_TYPE_##TYPE>(__func__, configuration(), valueOrDefault, key, \
                                                         list, count);                                   \
    }
KORVO_LIST_SETTINGS(LIST_FUNCTION)
#undef LIST_FUNCTION

char **korvo_core_configuration_get_all_keys(void) {
    return keysOf(__func__, configuration(), "");
}

korvo_core_status korvo_core_configuration_get_type(char const *key, korvo_core_settings_type *type) {
    return typeOfKey(__func__, configuration(), key, type);
}

unsigned char korvo_core_configuration_does_key_exist(char const *key) {
    return isKey(__func__, configuration(), key);
}
