// SPDX-License-Identifier: Apache-2.0
#include "simulator/completion.h"

#include <string_view>

namespace simulator {

namespace {

constexpr char const *topics_uri = "http://www.onvif.org/ver10/topics";

/// A text as the value of an attribute.
std::string escaped(std::string_view text) {
    constexpr std::string_view replacement = "\xef\xbf\xbd";
    std::string made;
    for (char const c : text) {
        switch (c) {
            case '&':
                made += "&amp;";
                break;
            case '<':
                made += "&lt;";
                break;
            case '"':
                made += "&quot;";
                break;
            case '\t':
            case '\n':
            case '\r':
                // As they are they would be read as blanks.
                made += "&#" + std::to_string(static_cast<int>(c)) + ";";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    made += replacement;
                } else {
                    made += c;
                }
        }
    }
    return made;
}

onvif::Topic topicOf(char const *last) {
    // Only the first name has a prefix.
    return {{topics_uri, "ActionEngine"}, {"", last}};
}

}  // namespace

onvif::Topic const &completionTopic(bool success) {
    static onvif::Topic const completed = topicOf("Completed");
    static onvif::Topic const failed = topicOf("Failed");
    return success ? completed : failed;
}

onvif::Event completionEvent(std::uint32_t action_id, std::string const &name, bool success, Wall wall) {
    return {std::string("tns1:ActionEngine/") + (success ? "Completed" : "Failed"),
            "<tt:Message UtcTime=\"" + momentText(wall) +
                R"("><tt:Source><tt:SimpleItem Name="ActionId" Value=")" + std::to_string(action_id) +
                R"("/><tt:SimpleItem Name="ActionName" Value=")" + escaped(name) +
                "\"/></tt:Source></tt:Message>",
            {{"tns1", "tt"}, {topics_uri, std::string(onvif::schema_uri)}}};
}

}  // namespace simulator
