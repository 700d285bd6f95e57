// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/topic.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "simulator/log.h"

namespace simulator::onvif {

namespace {

/// Reads names with "/" between them, up to what is no "/" or to "//".
Topic path(Scanner &scanner) {
    Topic topic;
    do {
        if (scanner.nextIs("*") || scanner.nextIs(".")) {
            throw scanner.error(
                scanner.shownNext() +
                " stands for no name here; name the topic, or write \"//.\" behind the topic above "
                "for it and all below it");
        }
        topic.push_back(scanner.name());
    } while (!scanner.nextIs("//") && scanner.accept("/"));
    return topic;
}

/// "first" for 0.
std::string ordinal(std::size_t place) {
    constexpr char const *words[] = {"first", "second",  "third",  "fourth", "fifth",
                                     "sixth", "seventh", "eighth", "ninth",  "tenth"};
    return place < std::size(words) ? words[place] : std::to_string(place + 1) + "th";
}

}  // namespace

Topic parseTopic(std::string_view text, Namespaces const &namespaces) {
    Scanner scanner("the topic", text, namespaces);
    scanner.skipBlanks();
    if (scanner.atEnd()) {
        return {};
    }
    Topic topic = path(scanner);
    scanner.skipBlanks();
    if (!scanner.atEnd()) {
        throw scanner.error("\"/\" or the end is expected here, not " + scanner.shownNext());
    }
    return topic;
}

TopicFilter::TopicFilter(std::string_view text, std::string_view dialect, Namespaces const &namespaces) {
    bool const concrete = dialect == concrete_dialect;
    if (!concrete && !dialect.empty() && dialect != concrete_set_dialect) {
        throw SyntaxError("the topic filter has the dialect " + quoted(dialect) + ", which is none of \"" +
                          std::string(concrete_dialect) + "\", \"" + std::string(concrete_set_dialect) +
                          "\" and \"\" for the latter");
    }
    Scanner scanner("the topic filter", text, namespaces);
    scanner.skipBlanks();
    while (!scanner.atEnd() || !alternatives_.empty()) {
        scanner.skipBlanks();
        Alternative &alternative = alternatives_.emplace_back(Alternative{path(scanner), false});
        std::size_t const end = scanner.position();
        if (scanner.accept("//")) {
            if (!scanner.accept(".")) {
                throw scanner.error(
                    end, "\"//\" stands only in \"//.\" at the end of a topic; between names write \"/\"");
            }
            if (concrete) {
                throw scanner.error(end, "the Concrete dialect has no \"//.\"; give the dialect \"" +
                                             std::string(concrete_set_dialect) + "\" for it");
            }
            alternative.with_all_below = true;
        }
        scanner.skipBlanks();
        if (scanner.atEnd()) {
            break;
        }
        if (!scanner.nextIs("|")) {
            throw scanner.error(
                (alternative.with_all_below
                     ? std::string("\"|\" or the end is expected behind \"//.\", not ")
                     : std::string("\"/\", \"//.\", \"|\" or the end is expected here, not ")) +
                scanner.shownNext());
        }
        if (concrete) {
            throw scanner.error("the Concrete dialect has no \"|\"; give the dialect \"" +
                                std::string(concrete_set_dialect) +
                                "\" for it, or make a trigger for each topic");
        }
        scanner.skip(1);
    }
}

std::string TopicFilter::whyNot(Topic const &topic) const {
    Alternative const *closest = nullptr;
    std::size_t equal = 0;
    for (Alternative const &wanted : alternatives_) {
        auto const differ =
            std::mismatch(wanted.topic.begin(), wanted.topic.end(), topic.begin(), topic.end()).first;
        auto const common = static_cast<std::size_t>(differ - wanted.topic.begin());
        if (closest == nullptr || common > equal) {
            closest = &wanted;
            equal = common;
        }
    }
    if (closest == nullptr) {
        return "";
    }
    if (equal == closest->topic.size()) {
        return "the topic goes on with " + quoted(topic[equal].local) +
               ", where the filter ends; with \"//.\" behind it the filter would take it";
    }
    Name const &wanted = closest->topic[equal];
    if (equal == topic.size()) {
        return "the topic ends before the " + ordinal(equal) + " name, the filter wants " +
               quoted(wanted.local);
    }
    Name const &met = topic[equal];
    std::string const place = "topic differs at the " + ordinal(equal) + " name: ";
    return met.local == wanted.local
               ? place + "the namespace of " + quoted(met.local) + " was " + quoted(met.uri) +
                     ", the filter wants " + quoted(wanted.uri)
               : place + quoted(met.local) + ", the filter wants " + quoted(wanted.local);
}

bool TopicFilter::matches(Topic const &topic) const {
    auto const takes = [&topic](Alternative const &wanted) {
        std::size_t const names = wanted.topic.size();
        bool const long_enough = wanted.with_all_below ? topic.size() >= names : topic.size() == names;
        // From the end on, where topics of one device differ.
        return long_enough &&
               std::equal(wanted.topic.rbegin(), wanted.topic.rend(),
                          std::make_reverse_iterator(topic.begin() + static_cast<std::ptrdiff_t>(names)));
    };
    return alternatives_.empty() || std::any_of(alternatives_.begin(), alternatives_.end(), takes);
}

}  // namespace simulator::onvif
