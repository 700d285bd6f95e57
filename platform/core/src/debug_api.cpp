// SPDX-License-Identifier: Apache-2.0
// What helps to find out what a process has for settings.
#include <boost/json/serialize.hpp>

#include "guarded_call.h"
#include "korvo_core.h"
#include "settings_store.h"
#include "text.h"

using namespace platform;

namespace {

void log_line(std::string const &line) {
    (void)korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_NOTICE, "%s", line.c_str());
}

std::string description(std::string const &key, Entry const &entry) {
    std::string line = "setting " + key + " (" + std::string(name_of(entry.type())) + ")";
    if (entry.value) {
        line += ": " + boost::json::serialize(to_json(*entry.value));
    }
    if (entry.fallback) {
        line += ", by default " + boost::json::serialize(to_json(*entry.fallback));
    }
    return line;
}

}  // namespace

void korvo_core_debug_settings_dump(void) {
    (void)guarded_call(__func__, [] {
        auto const snapshot = settings_store().current();
        Document const &document = snapshot->document();
        log_line("settings of " + settings_store().path() + ": " + std::to_string(document.entries.size()) +
                 " keys, version " + std::to_string(document.version));
        for (auto const &[key, entry] : document.entries) {
            log_line(description(key, entry));
        }
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

char *korvo_core_debug_get_setting_path(void) {
    char *path = nullptr;
    (void)guarded_call(__func__, [&] {
        path = Text(settings_store().path()).release();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
    return path;
}
