// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_TOPIC_H
#define KORVO_SIMULATOR_ONVIF_TOPIC_H

#include <string>
#include <string_view>
#include <vector>

#include "simulator/onvif/names.h"
#include "simulator/onvif/scanner.h"

namespace simulator::onvif {

/// From the topmost name down.
using Topic = std::vector<Name>;

/// Reads the topic of an event, a path of names with "/" between them. Blanks alone are a topic without a name. Throws
/// SyntaxError.
Topic parseTopic(std::string_view text, Namespaces const &namespaces);

inline constexpr std::string_view concrete_dialect =
    "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete";
inline constexpr std::string_view concrete_set_dialect =
    "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet";

/// Which topics a trigger takes: one or more topics with "|" between them, each alone or, with "//." at its end, with all
/// topics below it. Names are equal when their URIs and what follows the prefix are. A filter of blanks takes every
/// topic. In the Concrete dialect there is one topic and no "//.".
class TopicFilter {
  public:
    /// Takes every topic.
    TopicFilter() = default;
    /// An empty dialect is ConcreteSet. Throws SyntaxError.
    TopicFilter(std::string_view text, std::string_view dialect, Namespaces const &namespaces);

    bool takesAll() const { return alternatives_.empty(); }
    bool matches(Topic const &topic) const;

    /// Where a topic that the filter does not take differs from the wanted one that is closest to it.
    std::string whyNot(Topic const &topic) const;

  private:
    struct Alternative {
        Topic topic;
        bool with_all_below;
    };
    std::vector<Alternative> alternatives_;
};

}  // namespace simulator::onvif

#endif
