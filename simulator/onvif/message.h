// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_MESSAGE_H
#define KORVO_SIMULATOR_ONVIF_MESSAGE_H

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "simulator/onvif/names.h"

namespace simulator::onvif {

/// A message cannot be understood. what() says why.
class MessageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

enum class ItemKind { simple, element };

/// A SimpleItem or an ElementItem, wherever it stands in the message. What it has no attribute for is missing here.
struct Item {
    ItemKind kind;
    std::optional<std::string> name;
    std::optional<std::string> value;
};

/// The XML text of an event, read once for all filters.
class Message {
  public:
    /// Elements may stand so deep in one another.
    static constexpr std::size_t deepest_nesting = 100;

    /// Prefixes are looked up in the text's own declarations, then in the namespaces. There is no document type
    /// and no entity but the five of XML, and nothing is ever fetched. Throws MessageError for what is no XML with one
    /// outermost element, is nested too deep, or has an element whose prefix stands for no namespace.
    Message(std::string const &text, Namespaces const &namespaces);

    std::vector<Item> const &items() const { return items_; }
    /// The places in items() of those with this name.
    std::vector<std::size_t> const &itemsNamed(std::string const &name) const;

    /// The property that the message tells about, as one text: its items in Source and Key. Equal texts are equal
    /// properties of equal topics.
    std::string const &property() const { return property_; }
    /// Whether it tells that the property is no more.
    bool deletes() const { return deletes_; }

  private:
    class Reader;

    std::vector<Item> items_;
    std::unordered_map<std::string, std::vector<std::size_t>> by_name_;
    std::string property_;
    bool deletes_ = false;
};

}  // namespace simulator::onvif

#endif
