// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_NAMES_H
#define KORVO_SIMULATOR_ONVIF_NAMES_H

#include <optional>
#include <string>
#include <string_view>

#include "simulator/values.h"

namespace simulator::onvif {

/// The namespace of events' messages and their items.
inline constexpr std::string_view schema_uri = "http://www.onvif.org/ver10/schema";

/// Namespace prefixes and their URIs: the n-th key belongs to the n-th URI.
struct Namespaces {
    Texts keys;
    Texts uris;

    /// The URI of the first key that is this prefix; nothing when there is none.
    std::optional<std::string_view> uriOf(std::string_view prefix) const {
        for (std::size_t n = 0; n < keys.size() && n < uris.size(); ++n) {
            if (keys[n] == prefix) {
                return uris[n];
            }
        }
        return std::nullopt;
    }
};

/// A name with its prefix's URI in place of the prefix. A name without a prefix has no URI.
struct Name {
    std::string uri;
    std::string local;

    bool operator==(Name const &other) const { return local == other.local && uri == other.uri; }
    bool operator!=(Name const &other) const { return !(*this == other); }
};

}  // namespace simulator::onvif

#endif
