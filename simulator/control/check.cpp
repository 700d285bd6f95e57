// SPDX-License-Identifier: Apache-2.0
#include "simulator/control/check.h"

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

template <typename Read>
object verdictOf(Read read) {
    try {
        read();
        return {{"accepted", true}};
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
    return verdictOf([&] {
        (void)onvif::TopicFilter(members.text("topic_filter"), members.text("topic_filter_dialect", ""),
                                 namespacesIn(members));
    });
}

object checkContentFilter(Members const &members) {
    return verdictOf(
        [&] { (void)onvif::ContentFilter(members.text("content_filter"), namespacesIn(members)); });
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
