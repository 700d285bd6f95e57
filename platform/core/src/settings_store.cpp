// SPDX-License-Identifier: Apache-2.0
#include "settings_store.h"

#include <utility>

#include "bounds.h"
#include "file_failure.h"
#include "logging.h"

namespace platform {

void SettingsStore::open() {
    WriteLock lock(folder(), file_name());
    auto const before = current_under_lock(lock);
    if (!before->has_file()) {
        write(lock, before->document(), text_of(before->document()));
    }
}

std::shared_ptr<Snapshot const> SettingsStore::current() {
    try {
        return DocumentCache::current();
    } catch (DamagedDocument const &fault) {
        try {
            // Looked at again where nobody else repairs it at the same time.
            WriteLock lock(folder(), file_name());
            return current_under_lock(lock);
        } catch (FileFailure const &failure) {
            throw FileFailure("the settings file " + path() + " is damaged: " + fault.what() +
                              "; it cannot be put aside: " + failure.what());
        }
    }
}

korvo_core_status SettingsStore::change(char const *function,
                                        std::function<korvo_core_status(Document &)> const &edit) {
    WriteLock lock(folder(), file_name());
    auto const before = current_under_lock(lock);
    Document document = before->document();
    korvo_core_status const status = edit(document);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return status;
    }
    std::string const text = text_of(document);
    if (text == text_of(before->document())) {
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    if (text.size() > limits::settings_file) {
        Log(nullptr).error("%s refused a change that would make %s larger than %zu bytes", function,
                           path().c_str(), limits::settings_file);
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    write(lock, std::move(document), text);
    return KORVO_CORE_STATUS_NO_ERROR;
}

std::shared_ptr<Snapshot const> SettingsStore::current_under_lock(WriteLock &lock) {
    try {
        return DocumentCache::current();
    } catch (DamagedDocument const &fault) {
        std::string const kept = lock.set_aside();
        Log(nullptr).error("the settings file %s is damaged: %s; it is kept as %s, and a new one is begun",
                           path().c_str(), fault.what(), kept.c_str());
        return DocumentCache::current();
    }
}

void SettingsStore::write(WriteLock &lock, Document document, std::string const &text) {
    process::Descriptor file = lock.replace(text);
    hold(std::make_shared<Snapshot>(std::move(document), std::move(file)), false);
}

SettingsStore &settings_store() {
    // As long as the process: other objects use settings while they are destroyed.
    static auto *const store = new SettingsStore;
    return *store;
}

}  // namespace platform
