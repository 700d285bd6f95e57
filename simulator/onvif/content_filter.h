// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_CONTENT_FILTER_H
#define KORVO_SIMULATOR_ONVIF_CONTENT_FILTER_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/onvif/message.h"
#include "simulator/onvif/names.h"
#include "simulator/onvif/scanner.h"

namespace simulator::onvif {

/// Which messages a trigger takes:
///
///     filter     = condition | filter "and" filter | filter "or" filter | "not" "(" filter ")" | "(" filter ")"
///     condition  = "boolean" "(" "//" prefix ":" ("SimpleItem" | "ElementItem") "[" test "]" ")"
///     test       = ("@Name" | "@Value") "=" text in double quotes
///                | test "and" test | test "or" test | "not" "(" test ")" | "(" test ")"
///
/// "and" binds tighter than "or". A condition holds when the message has such an item, anywhere; a test compares the
/// attribute's text, and fails where the item has no such attribute. The prefix must stand for the namespace of events'
/// messages. A filter of blanks takes every message.
class ContentFilter {
  public:
    /// Brackets and "not" may stand so deep in one another.
    static constexpr std::size_t deepest_nesting = 100;

    /// Takes every message.
    ContentFilter() = default;
    /// Throws SyntaxError.
    ContentFilter(std::string_view text, Namespaces const &namespaces);

    bool matches(Message const &message) const;

    /// The first piece of the filter that a message fails which it does not take, and the value that it met.
    std::string whyNot(Message const &message) const;

  private:
    struct Part {
        enum class Kind { all_of, any_of, none_of, item, name_is, value_is };
        Kind kind;
        /// Of an item the one test; of an attribute none.
        std::vector<Part> parts;
        /// What an attribute must be.
        std::string text;
        /// Of an item.
        ItemKind item_kind = ItemKind::simple;
        std::size_t column = 0;
    };
    class Parser;

    static bool holds(Part const &part, Message const &message);
    static bool holds(Part const &part, Item const &item);
    static bool hasItem(Part const &item, Message const &message);
    static std::string const *nameIn(Part const &test);
    static std::string why(Part const &part, Message const &message, bool holds);
    static std::string whyItem(Part const &item, Message const &message, bool holds);

    /// One part, or none for a filter that takes everything.
    std::vector<Part> root_;
};

}  // namespace simulator::onvif

#endif
