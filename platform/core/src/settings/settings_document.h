// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SETTINGS_DOCUMENT_H
#define KORVO_PLATFORM_SETTINGS_DOCUMENT_H

#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "settings/setting_value.h"

namespace platform {

/// What is kept under a key: a value, a default value, or both, of one type.
struct Entry {
    std::optional<Value> value;
    std::optional<Value> fallback;

    korvo_core_settings_type type() const { return typeOf(value ? *value : *fallback); }
};

/// What a settings file or a configuration holds.
struct Document {
    unsigned int version = 0;
    unsigned int previous_version = 0;
    std::map<std::string, Entry, std::less<>> entries;
};

/// A text is no document; says why.
class DamagedDocument : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A text is a document of a format that is newer than this code; says which.
class NewerDocument : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads the text of a file. Throws DamagedDocument or NewerDocument.
Document documentFrom(std::string_view text);

/// The text of a file: one line a key, sorted. Equal texts mean equal documents.
std::string textOf(Document const &document);

}  // namespace platform

#endif
