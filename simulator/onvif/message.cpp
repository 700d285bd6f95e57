// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/message.h"

#include <algorithm>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "simulator/log.h"

namespace simulator::onvif {

namespace {

constexpr std::string_view xmlns = "xmlns";

/// The prefix that an attribute declares, empty for the default namespace; nothing for other attributes.
std::optional<std::string_view> declaredPrefix(std::string_view attribute) {
    if (attribute == xmlns) {
        return std::string_view();
    }
    if (attribute.substr(0, xmlns.size() + 1) == "xmlns:") {
        return attribute.substr(xmlns.size() + 1);
    }
    return std::nullopt;
}

std::optional<std::string> attributeOf(pugi::xml_node element, char const *name) {
    pugi::xml_attribute const attribute = element.attribute(name);
    return attribute.empty() ? std::nullopt : std::optional<std::string>(attribute.value());
}

/// A text that no other text can continue to an equal whole.
std::string delimited(std::string const &text) {
    return std::to_string(text.size()) + ":" + text;
}

std::string contentsOf(pugi::xml_node element) {
    std::ostringstream text;
    for (pugi::xml_node const child : element.children()) {
        child.print(text, "", pugi::format_raw | pugi::format_no_declaration);
    }
    return text.str();
}

}  // namespace

/// Walks through the elements in their order.
class Message::Reader : public pugi::xml_tree_walker {
  public:
    Reader(Message &message, Namespaces const &namespaces) : message_(message), namespaces_(namespaces) {}

    bool for_each(pugi::xml_node &node) override {
        if (node.type() == pugi::node_doctype) {
            throw MessageError("the message has a document type, which no message needs; leave it out");
        }
        if (node.type() != pugi::node_element) {
            return true;
        }
        if (static_cast<std::size_t>(depth()) >= deepest_nesting) {
            throw MessageError("the message has more than " + std::to_string(deepest_nesting) +
                               " elements in one another");
        }
        leaveTo(static_cast<std::size_t>(depth()));
        enter(node);
        return true;
    }

    void finish() {
        for (std::string const &part : property_) {
            message_.property_ += part;
        }
        for (std::size_t n = 0; n < message_.items_.size(); ++n) {
            if (message_.items_[n].name) {
                message_.by_name_[*message_.items_[n].name].push_back(n);
            }
        }
    }

  private:
    /// An element that has begun and not ended.
    struct Open {
        std::vector<std::string> prefixes;
        bool names_property;
    };

    void leaveTo(std::size_t depth) {
        while (open_.size() > depth) {
            for (std::string const &prefix : open_.back().prefixes) {
                declared_[prefix].pop_back();
            }
            open_.pop_back();
        }
    }

    void enter(pugi::xml_node element) {
        Open open{{}, !open_.empty() && open_.back().names_property};
        for (pugi::xml_attribute const attribute : element.attributes()) {
            if (auto const prefix = declaredPrefix(attribute.name())) {
                open.prefixes.emplace_back(*prefix);
                declared_[open.prefixes.back()].push_back(attribute.value());
            }
        }
        std::string_view const name = element.name();
        std::size_t const colon = name.find(':');
        std::string const prefix(colon == std::string_view::npos ? "" : name.substr(0, colon));
        if (uriOf(prefix, element) == schema_uri) {
            std::string_view const local = colon == std::string_view::npos ? name : name.substr(colon + 1);
            take(local, element, open);
        }
        open_.push_back(std::move(open));
    }

    void take(std::string_view local, pugi::xml_node element, Open &open) {
        if (local == "SimpleItem" || local == "ElementItem") {
            ItemKind const kind = local == "SimpleItem" ? ItemKind::simple : ItemKind::element;
            message_.items_.push_back({kind, attributeOf(element, "Name"), attributeOf(element, "Value")});
            if (open.names_property) {
                property_.insert(
                    delimited(std::string(local)) + delimited(message_.items_.back().name.value_or("")) +
                    delimited(message_.items_.back().value.value_or("")) + delimited(contentsOf(element)));
            }
            // What stands in an item is part of it.
            open.names_property = false;
        } else if (local == "Source" || local == "Key") {
            open.names_property = true;
        } else if (local == "Message") {
            message_.deletes_ = message_.deletes_ ||
                                std::string_view(element.attribute("PropertyOperation").value()) == "Deleted";
        }
    }

    std::string_view uriOf(std::string const &prefix, pugi::xml_node element) const {
        auto const found = declared_.find(prefix);
        if (found != declared_.end() && !found->second.empty()) {
            return found->second.back();
        }
        if (auto const uri = namespaces_.uriOf(prefix)) {
            return *uri;
        }
        if (!prefix.empty()) {
            throw MessageError(
                "the message's element " + quoted(element.name()) + " has the prefix " + quoted(prefix) +
                ", which stands for no namespace; declare it in the message, or give it with its "
                "URI in the event's lists of namespace keys and URIs");
        }
        return {};
    }

    Message &message_;
    Namespaces const &namespaces_;
    std::vector<Open> open_;
    /// For each prefix the URIs of the declarations that hold at this place, the innermost last.
    std::unordered_map<std::string, std::vector<char const *>> declared_;
    /// In an order of its own: senders may write a property's items in any.
    std::multiset<std::string> property_;
};

Message::Message(std::string const &text, Namespaces const &namespaces) {
    if (text.find('\0') != std::string::npos) {
        throw MessageError("the message is no XML: it has a NUL character");
    }
    pugi::xml_document document;
    // Read as a fragment, so that text around the outermost element is seen and not passed over.
    pugi::xml_parse_result const result = document.load_buffer(
        text.data(), text.size(), pugi::parse_default | pugi::parse_doctype | pugi::parse_fragment,
        pugi::encoding_utf8);
    if (!result) {
        throw MessageError(std::string("the message is no XML: ") + result.description() + " (byte " +
                           std::to_string(result.offset + 1) + ")");
    }
    auto const count = [&](pugi::xml_node_type type) {
        return std::count_if(document.begin(), document.end(),
                             [type](pugi::xml_node node) { return node.type() == type; });
    };
    if (count(pugi::node_element) != 1 || count(pugi::node_pcdata) + count(pugi::node_cdata) != 0) {
        throw MessageError("the message is no XML: it must be one element, and no text outside of it");
    }
    Reader reader(*this, namespaces);
    document.traverse(reader);
    reader.finish();
}

std::vector<std::size_t> const &Message::itemsNamed(std::string const &name) const {
    static std::vector<std::size_t> const none;
    auto const found = by_name_.find(name);
    return found == by_name_.end() ? none : found->second;
}

}  // namespace simulator::onvif
