// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/event.h"

#include <algorithm>

namespace simulator::onvif {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr char const *blanks = " \t\r\n";
    std::size_t const first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Calls the function with each piece between separators, until it gives true; gives whether it did.
template <typename Function>
bool anyPiece(std::string_view text, char separator, Function function) {
    while (true) {
        std::size_t const end = text.find(separator);
        if (function(text.substr(0, end))) {
            return true;
        }
        if (end == std::string_view::npos) {
            return false;
        }
        text.remove_prefix(end + 1);
    }
}

/// The topic with "{uri}" in place of each prefix that is explained.
std::string resolved(std::string_view topic, Namespaces const &namespaces) {
    std::string path;
    anyPiece(topic, '/', [&](std::string_view segment) {
        if (segment.data() != topic.data()) {
            path += '/';
        }
        std::size_t const colon = segment.find(':');
        if (colon != std::string_view::npos) {
            auto const key =
                std::find(namespaces.keys.begin(), namespaces.keys.end(), segment.substr(0, colon));
            auto const n = static_cast<std::size_t>(key - namespaces.keys.begin());
            if (key != namespaces.keys.end() && n < namespaces.uris.size()) {
                path += '{';
                path += namespaces.uris[n];
                path += '}';
                segment.remove_prefix(colon + 1);
            }
        }
        path += segment;
        return false;
    });
    return path;
}

bool startsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace

bool topicMatches(std::string_view filter, Namespaces const &filter_namespaces, Event const &event) {
    if (trimmed(filter).empty()) {
        return true;
    }
    std::string const topic = resolved(trimmed(event.topic), event.namespaces);
    return anyPiece(filter, '|', [&](std::string_view alternative) {
        constexpr std::string_view subtree = "//.";
        std::string_view wanted = trimmed(alternative);
        bool const below =
            wanted.size() >= subtree.size() && wanted.substr(wanted.size() - subtree.size()) == subtree;
        if (below) {
            wanted.remove_suffix(subtree.size());
        }
        std::string const path = resolved(wanted, filter_namespaces);
        return topic == path || (below && startsWith(topic, path + "/"));
    });
}

bool contentMatches(std::string_view filter, Event const &event) {
    return event.message.find(filter) != std::string::npos;
}

}  // namespace simulator::onvif
