// SPDX-License-Identifier: Apache-2.0
// Any topic filter, content filter, topic and message (a line each) must be read or refused with a reason, and a filter
// that does not take a message must say why.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "simulator/onvif/content_filter.h"
#include "simulator/onvif/event.h"
#include "simulator/onvif/topic.h"

namespace onvif = simulator::onvif;

namespace {

void refusedWithReason(std::exception const &refusal) {
    if (std::string_view(refusal.what()).empty()) {
        std::abort();
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    std::string_view rest(reinterpret_cast<char const *>(data), size);
    std::array<std::string, 3> lines;
    for (std::string &line : lines) {
        line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    }
    std::string const message(rest);
    onvif::Namespaces const namespaces{{"tns1", "tt"}, {"urn:topics", std::string(onvif::schema_uri)}};

    onvif::TopicFilter topics;
    onvif::ContentFilter contents;
    for (std::string_view const dialect : {onvif::concrete_dialect, onvif::concrete_set_dialect}) {
        try {
            topics = onvif::TopicFilter(lines[0], dialect, namespaces);
        } catch (onvif::SyntaxError const &error) {
            refusedWithReason(error);
        }
    }
    try {
        contents = onvif::ContentFilter(lines[1], namespaces);
    } catch (onvif::SyntaxError const &error) {
        refusedWithReason(error);
    }
    try {
        onvif::Event const event(lines[2], message, namespaces);
        (void)topics.matches(event.topic);
        if (!contents.matches(event.message) && contents.whyNot(event.message).empty()) {
            std::abort();
        }
        onvif::Event const again(lines[2], message, namespaces);
        if (again.message.property() != event.message.property()) {
            std::abort();
        }
    } catch (onvif::SyntaxError const &error) {
        refusedWithReason(error);
    } catch (onvif::MessageError const &error) {
        refusedWithReason(error);
    }
    return 0;
}
