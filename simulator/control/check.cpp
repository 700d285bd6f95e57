// SPDX-License-Identifier: Apache-2.0
#include "simulator/control/check.h"

#include <optional>

#include "simulator/filters.h"
#include "simulator/log.h"
#include "simulator/meaning.h"

namespace simulator::control {

namespace {

using boost::json::object;

onvif::Namespaces namespacesIn(Members const &members) {
    onvif::Namespaces namespaces{members.texts("namespace_keys"), members.texts("namespace_uris")};
    std::string const fault = faultOfNamespaces(namespaces);
    if (!fault.empty()) {
        throw impossible(fault);
    }
    return namespaces;
}

/// What reading the filter gave, or why it could not be read.
template <typename Read>
object verdictOf(Read read) {
    try {
        object told = read();
        told["accepted"] = true;
        return told;
    } catch (onvif::SyntaxError const &error) {
        object told{{"accepted", false}, {"words", error.what()}};
        if (error.column() != 0) {
            told["column"] = error.column();
        }
        return told;
    }
}

}  // namespace

object checkTopicFilter(Members const &members) {
    onvif::Namespaces const namespaces = namespacesIn(members);
    std::optional<onvif::Topic> topic;
    if (members.has("topic")) {
        try {
            topic = onvif::parseTopic(members.text("topic"), namespaces);
        } catch (onvif::SyntaxError const &error) {
            throw impossible(error.what());
        }
    }
    return verdictOf([&] {
        onvif::TopicFilter const filter(members.text("topic_filter"),
                                        members.text("topic_filter_dialect", ""), namespaces);
        return topic ? object{{"takes", filter.matches(*topic)}} : object();
    });
}

object checkContentFilter(Members const &members) {
    onvif::Namespaces const namespaces = namespacesIn(members);
    std::optional<onvif::Message> message;
    if (members.has("message")) {
        try {
            message.emplace(members.text("message"), namespaces);
        } catch (onvif::MessageError const &error) {
            throw impossible(error.what());
        }
    }
    return verdictOf([&] {
        onvif::ContentFilter const filter(members.text("content_filter"), namespaces);
        return message ? object{{"takes", filter.matches(*message)}} : object();
    });
}

object checkFilters(Members const &members, Wall now) {
    Values const filters{members.numbers("weekday_filters"), members.numbers("time_filters_start"),
                         members.numbers("time_filters_end")};
    std::string const fault = faultOfFilters(filters);
    if (!fault.empty()) {
        return {{"accepted", false}, {"words", fault}};
    }
    LocalTime const time = localTime(members.has("time") ? momentIn(members, "time") : now);
    return {{"accepted", true}, {"runs", mayRun(filters, time)}, {"words", whyMayRun(filters, time)}};
}

Wall momentIn(Members const &members, char const *name) {
    std::string const text = members.text(name);
    auto const moment = readMoment(text);
    if (!moment) {
        throw malformed(quoted(text) + " " + no_moment);
    }
    return *moment;
}

}  // namespace simulator::control
