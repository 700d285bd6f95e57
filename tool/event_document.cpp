// SPDX-License-Identifier: Apache-2.0
#include "tool/event_document.h"

#include <boost/json/value.hpp>
#include <optional>

#include "tool/failure.h"
#include "tool/namespaces.h"

namespace tool {
namespace {

constexpr char const *blanks = " \t\r\n";

struct Element {
    std::size_t begin = 0;
    std::size_t content = 0;
    std::size_t content_end = 0;
    std::size_t end = 0;
};

/// The first element of this name from a place on, whatever its prefix. Elements of one name are not looked for in each other.
std::optional<Element> findElement(std::string const &text, std::string const &name, std::size_t from = 0) {
    for (std::size_t begin = text.find('<', from); begin != std::string::npos;
         begin = text.find('<', begin + 1)) {
        std::size_t const name_end = text.find_first_of(std::string(blanks) + "/>", begin + 1);
        std::size_t const tag_end = text.find('>', begin);
        if (name_end == std::string::npos || tag_end == std::string::npos) {
            return {};
        }
        std::string const full = text.substr(begin + 1, name_end - begin - 1);
        std::size_t const colon = full.find(':');
        if (full.substr(colon == std::string::npos ? 0 : colon + 1) != name) {
            continue;
        }
        if (text[tag_end - 1] == '/') {
            return Element{begin, tag_end + 1, tag_end + 1, tag_end + 1};
        }
        std::string closing = "</";
        closing += full + ">";
        std::size_t const content_end = text.find(closing, tag_end);
        if (content_end == std::string::npos) {
            return {};
        }
        return Element{begin, tag_end + 1, content_end, content_end + closing.size()};
    }
    return {};
}

std::string trimmed(std::string const &text) {
    auto const begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// "tns1=http://..." for each prefix that is declared somewhere.
std::vector<std::string> declarations(std::string const &text) {
    std::vector<std::string> found;
    std::string const xmlns = "xmlns:";
    for (std::size_t begin = text.find(xmlns); begin != std::string::npos;
         begin = text.find(xmlns, begin + 1)) {
        std::size_t const equals = text.find('=', begin);
        std::size_t const quote = equals == std::string::npos ? equals : text.find_first_of("\"'", equals);
        std::size_t const end = quote == std::string::npos ? quote : text.find(text[quote], quote + 1);
        if (end == std::string::npos) {
            break;
        }
        found.push_back(trimmed(text.substr(begin + xmlns.size(), equals - begin - xmlns.size())) + "=" +
                        text.substr(quote + 1, end - quote - 1));
    }
    return found;
}

}  // namespace

boost::json::object eventInDocument(std::string const &parameter, std::string const &text,
                                    std::string const &topic) {
    std::string told = topic;
    auto const topic_element = findElement(text, "Topic");
    if (told.empty() && topic_element) {
        told =
            trimmed(text.substr(topic_element->content, topic_element->content_end - topic_element->content));
    }
    if (told.empty()) {
        throw Failure(Exit::usage, parameter + " does not name the event's topic", "give it with --topic");
    }
    // A notification has the message in an element of the same name, with another prefix.
    std::size_t const from = topic_element ? topic_element->end : 0;
    auto message = findElement(text, "Message", from);
    if (!message) {
        throw Failure(
            Exit::usage, parameter + " holds no message",
            "an event has an element tt:Message; \"korvo-action-engine inject --dry-run\" shows one");
    }
    auto const inner = findElement(text.substr(0, message->content_end), "Message", message->content);
    if (inner) {
        message = inner;
    }
    Namespaces const namespaces = namespacesIn(parameter, declarations(text));
    return {{"topic", told},
            {"message", text.substr(message->begin, message->end - message->begin)},
            {"namespace_keys", namespaces.keys},
            {"namespace_uris", namespaces.uris}};
}

}  // namespace tool
