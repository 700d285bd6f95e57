// SPDX-License-Identifier: Apache-2.0
#include "settings/settings_store.h"

#include <exception>
#include <utility>

#include "base/logging.h"
#include "settings/bounds.h"

namespace platform {

void SettingsStore::open() {
    WriteLock lock(folder(), fileName());
    auto const before = currentUnderLock(lock);
    if (!before->hasFile()) {
        write(lock, before->document(), textOf(before->document()));
    }
}

std::shared_ptr<Snapshot const> SettingsStore::current() {
    try {
        return DocumentCache::current();
    } catch (DamagedDocument const &fault) {
        try {
            // Looked at again where nobody else repairs it at the same time.
            WriteLock lock(folder(), fileName());
            return currentUnderLock(lock);
        } catch (std::runtime_error const &failure) {
            throw std::runtime_error("the settings file " + path() + " is damaged: " + fault.what() +
                                     "; it cannot be put aside: " + failure.what());
        }
    }
}

korvo_core_status SettingsStore::change(char const *function,
                                        std::function<korvo_core_status(Document &)> const &edit) {
    WriteLock lock(folder(), fileName());
    auto const before = currentUnderLock(lock);
    Document document = before->document();
    korvo_core_status const status = edit(document);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return status;
    }
    std::string const text = textOf(document);
    if (text == textOf(before->document())) {
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

std::shared_ptr<Snapshot const> SettingsStore::currentUnderLock(WriteLock &lock) {
    try {
        return DocumentCache::current();
    } catch (DamagedDocument const &fault) {
        std::string const kept = lock.setAside();
        Log(nullptr).error("the settings file %s is damaged: %s; it is kept as %s, and a new one is begun",
                           path().c_str(), fault.what(), kept.c_str());
        return DocumentCache::current();
    }
}

void SettingsStore::write(WriteLock &lock, Document document, std::string const &text) {
    process::Descriptor file = lock.replace(text);
    try {
        hold(std::make_shared<Snapshot>(std::move(document), std::move(file)), false);
    } catch (std::exception const &) {
        // What is on the disk is done, and is read from there when it is asked for.
    }
}

SettingsStore &settingsStore() {
    // As long as the process: other objects use settings while they are destroyed.
    static auto *const store = new SettingsStore;
    return *store;
}

}  // namespace platform
