// SPDX-License-Identifier: Apache-2.0
// What helps to find out what a process has for settings.
#include <boost/json/serialize.hpp>

#include "base/guarded_call.h"
#include "base/text.h"
#include "korvo_core.h"
#include "settings/settings_store.h"

using namespace platform;

namespace {

void logLine(std::string const &line) {
    (void)korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_NOTICE, "%s", line.c_str());
}

std::string description(std::string const &key, Entry const &entry) {
    std::string line = "setting " + key + " (" + std::string(nameOf(entry.type())) + ")";
    if (entry.value) {
        line += ": " + boost::json::serialize(toJson(*entry.value));
    }
    if (entry.fallback) {
        line += ", by default " + boost::json::serialize(toJson(*entry.fallback));
    }
    return line;
}

}  // namespace

void korvo_core_debug_settings_dump(void) {
    (void)guardedCall(__func__, [] {
        auto const snapshot = settingsStore().current();
        Document const &document = snapshot->document();
        logLine("settings of " + settingsStore().path() + ": " + std::to_string(document.entries.size()) +
                " keys, version " + std::to_string(document.version));
        for (auto const &[key, entry] : document.entries) {
            logLine(description(key, entry));
        }
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

char *korvo_core_debug_get_setting_path(void) {
    char *path = nullptr;
    (void)guardedCall(__func__, [&] {
        path = Text(settingsStore().path()).release();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
    return path;
}
