// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SETTINGS_STORE_H
#define KORVO_PLATFORM_SETTINGS_STORE_H

#include <functional>

#include "korvo_core.h"
#include "settings/document_cache.h"

namespace platform {

/// The settings of the user.
class SettingsStore final : public DocumentCache {
  public:
    SettingsStore() : DocumentCache("settings.json") {}

    /// Makes the file when there is none. Throws std::runtime_error.
    void open();

    /// As the base class does; but a damaged file is put aside, logged, and the document empty.
    std::shared_ptr<Snapshot const> current() override;

    /// Lets `edit` change the document, and writes it when it has changed and `edit` returns 0. Nobody else
    /// writes meanwhile. Returns what `edit` returns; 1, logged, when the document has become too large. Throws
    /// std::runtime_error.
    korvo_core_status change(char const *function, std::function<korvo_core_status(Document &)> const &edit);

    /// Whether there was no file, or a damaged one, when this process looked for it.
    bool isNew() { return hasFoundNoFile(); }

  private:
    std::shared_ptr<Snapshot const> currentUnderLock(WriteLock &lock);
    void write(WriteLock &lock, Document document, std::string const &text);
};

SettingsStore &settingsStore();

}  // namespace platform

#endif
