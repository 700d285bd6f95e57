// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/content_filter.h"

#include <algorithm>
#include <functional>

#include "simulator/log.h"

namespace simulator::onvif {

namespace {

/// How "curly" quotes begin that word processors put in place of straight ones, as UTF-8.
constexpr std::string_view typographic_quotes[] = {"\u201c", "\u201d", "\u201e", "\u2018",
                                                   "\u2019", "\u00ab", "\u00bb"};

}  // namespace

class ContentFilter::Parser {
  public:
    explicit Parser(Scanner &scanner) : scanner_(scanner) {}

    Part filter() {
        Part whole = anyOf(&Parser::condition);
        if (!scanner_.atEnd()) {
            throw scanner_.error(scanner_.nextIs(")") ? std::string("this \")\" closes nothing")
                                                      : "\"and\", \"or\" or the end is expected here, not " +
                                                            scanner_.shownNext());
        }
        return whole;
    }

  private:
    using Leaf = Part (Parser::*)();

    // Each reads its piece and the blanks behind it. Conditions and tests are joined alike, and differ in their leaves.

    Part anyOf(Leaf leaf) {
        return joined("or", Part::Kind::any_of, [this, leaf] { return allOf(leaf); });
    }

    Part allOf(Leaf leaf) {
        return joined("and", Part::Kind::all_of, [this, leaf] { return single(leaf); });
    }

    template <typename Read>
    Part joined(std::string_view word, Part::Kind kind, Read read) {
        Part first = read();
        if (!acceptWord(word)) {
            return first;
        }
        Part all{kind, {}, ""};
        all.parts.push_back(std::move(first));
        do {
            all.parts.push_back(read());
        } while (acceptWord(word));
        return all;
    }

    Part single(Leaf leaf) {
        std::size_t const start = scanner_.position();
        bool const negated = acceptWord("not");
        if (!negated && !scanner_.nextIs("(")) {
            return (this->*leaf)();
        }
        if (++depth_ > deepest_nesting) {
            throw scanner_.error(start,
                                 "more than " + std::to_string(deepest_nesting) + " brackets in one another");
        }
        expect("(", negated ? "\"(\" is expected behind \"not\"" : "");
        Part inside = anyOf(leaf);
        expect(")", "\")\" is expected here");
        --depth_;
        if (!negated) {
            return inside;
        }
        Part none{Part::Kind::none_of, {}, ""};
        none.parts.push_back(std::move(inside));
        return none;
    }

    Part condition() {
        if (!acceptWord("boolean")) {
            throw scanner_.error(scanner_.nextIs("//") || scanner_.nextIs("@")
                                     ? std::string("a condition is written boolean(//tt:SimpleItem[...]); "
                                                   "\"boolean(\" is missing here")
                                     : "boolean(...), not(...) or \"(\" is expected here, not " +
                                           scanner_.shownNext());
        }
        expect("(", "\"(\" is expected behind \"boolean\"");
        expect("//", "\"//\" is expected here, as in boolean(//tt:SimpleItem[...])");
        Part item{Part::Kind::item, {}, ""};
        itemName(item);
        expect("[", "\"[\" with tests of @Name and @Value is expected here");
        item.parts.push_back(anyOf(&Parser::attribute));
        expect("]", "\"and\", \"or\" or \"]\" is expected here");
        expect(")", "\")\" is expected here");
        return item;
    }

    void itemName(Part &item) {
        std::size_t const start = scanner_.position();
        Name const name = scanner_.name();
        if (name.local != "SimpleItem" && name.local != "ElementItem") {
            throw scanner_.error(start,
                                 "SimpleItem or ElementItem is expected here, not " + quoted(name.local));
        }
        if (name.uri != schema_uri) {
            throw scanner_.error(
                start,
                (name.uri.empty() ? name.local + " has no prefix; write tt:" + name.local +
                                        " and give tt in the lists of namespace keys and URIs; the URI is \""
                                  : "the prefix stands for " + quoted(name.uri) + ", and must stand for \"") +
                    std::string(schema_uri) + "\"");
        }
        item.item_kind = name.local == "SimpleItem" ? ItemKind::simple : ItemKind::element;
        scanner_.skipBlanks();
    }

    Part attribute() {
        Part test{Part::Kind::name_is, {}, ""};
        if (!scanner_.accept("@")) {
            throw scanner_.error("@Name or @Value is expected here, not " + scanner_.shownNext());
        }
        scanner_.skipBlanks();
        if (acceptWord("Value")) {
            test.kind = Part::Kind::value_is;
        } else if (!acceptWord("Name")) {
            throw scanner_.error("the attributes of items are @Name and @Value");
        }
        if (!scanner_.accept("=")) {
            throw scanner_.error("\"=\" is expected here, not " + scanner_.shownNext() +
                                 "; texts are compared whether they are equal, and in no other way");
        }
        scanner_.skipBlanks();
        test.text = literal();
        return test;
    }

    std::string literal() {
        if (!scanner_.accept("\"")) {
            bool const other_quotes =
                scanner_.nextIs("'") ||
                std::any_of(std::begin(typographic_quotes), std::end(typographic_quotes),
                            [this](std::string_view quote) { return scanner_.nextIs(quote); });
            throw scanner_.error(
                other_quotes
                    ? "these are not the quotes that filters have; write straight double ones: \"true\""
                    : "a text in double quotes is expected here, as in @Value=\"true\", not " +
                          scanner_.shownNext());
        }
        std::size_t const end = scanner_.rest().find('"');
        if (end == std::string_view::npos) {
            throw scanner_.error("the text that begins here has no \" at its end");
        }
        std::string const text(scanner_.rest().substr(0, end));
        scanner_.skip(end + 1);
        scanner_.skipBlanks();
        return text;
    }

    bool acceptWord(std::string_view word) {
        if (!scanner_.acceptWord(word)) {
            return false;
        }
        scanner_.skipBlanks();
        return true;
    }

    void expect(std::string_view token, char const *otherwise) {
        if (!scanner_.accept(token)) {
            throw scanner_.error(std::string(otherwise) + ", not " + scanner_.shownNext());
        }
        scanner_.skipBlanks();
    }

    Scanner &scanner_;
    std::size_t depth_ = 0;
};

ContentFilter::ContentFilter(std::string_view text, Namespaces const &namespaces) {
    Scanner scanner("the content filter", text, namespaces);
    scanner.skipBlanks();
    if (!scanner.atEnd()) {
        root_.push_back(Parser(scanner).filter());
    }
}

bool ContentFilter::matches(Message const &message) const {
    return root_.empty() || holds(root_.front(), message);
}

bool ContentFilter::holds(Part const &part, Message const &message) {
    auto const inner = [&](Part const &one) { return holds(one, message); };
    switch (part.kind) {
        case Part::Kind::all_of:
            return std::all_of(part.parts.begin(), part.parts.end(), inner);
        case Part::Kind::any_of:
            return std::any_of(part.parts.begin(), part.parts.end(), inner);
        case Part::Kind::none_of:
            return std::none_of(part.parts.begin(), part.parts.end(), inner);
        default:
            return hasItem(part, message);
    }
}

bool ContentFilter::holds(Part const &part, Item const &item) {
    auto const inner = [&](Part const &one) { return holds(one, item); };
    switch (part.kind) {
        case Part::Kind::all_of:
            return std::all_of(part.parts.begin(), part.parts.end(), inner);
        case Part::Kind::any_of:
            return std::any_of(part.parts.begin(), part.parts.end(), inner);
        case Part::Kind::none_of:
            return std::none_of(part.parts.begin(), part.parts.end(), inner);
        case Part::Kind::name_is:
            return item.name == part.text;
        default:
            return item.value == part.text;
    }
}

/// The name that an item must have to pass; NULL when items of several names may.
std::string const *ContentFilter::nameIn(Part const &test) {
    if (test.kind == Part::Kind::name_is) {
        return &test.text;
    }
    if (test.kind == Part::Kind::all_of) {
        for (Part const &part : test.parts) {
            if (std::string const *const name = nameIn(part)) {
                return name;
            }
        }
    }
    return nullptr;
}

bool ContentFilter::hasItem(Part const &item, Message const &message) {
    auto const fits = [&](Item const &one) {
        return one.kind == item.item_kind && holds(item.parts.front(), one);
    };
    // Most tests name their item, so that long filters and long messages are not multiplied.
    if (std::string const *const name = nameIn(item.parts.front())) {
        auto const &places = message.itemsNamed(*name);
        return std::any_of(places.begin(), places.end(),
                           [&](std::size_t n) { return fits(message.items()[n]); });
    }
    return std::any_of(message.items().begin(), message.items().end(), fits);
}

std::string ContentFilter::whyNot(Message const &message) const {
    return root_.empty() ? "" : why(root_.front(), message, /*holds*/ false);
}

/// Why a part holds, or does not.
std::string ContentFilter::why(Part const &part, Message const &message, bool holds) {
    if (part.kind == Part::Kind::item) {
        return whyItem(part, message, holds);
    }
    // The piece that decided: of "not" the opposite of what is inside, else the first one like the whole.
    bool const inner = part.kind == Part::Kind::none_of ? !holds : holds;
    auto const decided = std::find_if(part.parts.begin(), part.parts.end(), [&](Part const &one) {
        return ContentFilter::holds(one, message) == inner;
    });
    return decided == part.parts.end() ? "" : why(*decided, message, inner);
}

std::string ContentFilter::whyItem(Part const &item, Message const &message, bool holds) {
    std::string const kind = item.item_kind == ItemKind::simple ? "SimpleItem" : "ElementItem";
    std::string const *const name = nameIn(item.parts.front());
    if (name == nullptr) {
        return (holds ? "the message has the " : "the message has no ") + kind + " that the filter " +
               (holds ? "excludes" : "asks for");
    }
    constexpr std::size_t most_shown = 3;
    std::size_t count = 0;
    std::string met;
    for (std::size_t const n : message.itemsNamed(*name)) {
        Item const &one = message.items()[n];
        if (one.kind == item.item_kind && ++count <= most_shown) {
            met += (met.empty() ? "" : ", ") + (one.value ? quoted(*one.value) : "without a value");
        }
    }
    if (count == 0) {
        return "the message has no " + kind + " " + quoted(*name);
    }
    if (count > most_shown) {
        met += " and others";
    }
    std::string wanted;
    std::function<void(Part const &)> const collect = [&](Part const &test) {
        if (test.kind == Part::Kind::value_is) {
            wanted += (wanted.empty() ? "" : ", ") + quoted(test.text);
        }
        std::for_each(test.parts.begin(), test.parts.end(), collect);
    };
    collect(item.parts.front());
    return quoted(*name) + " was " + met +
           (holds ? ", which the filter excludes" : ", the filter wants " + wanted);
}

}  // namespace simulator::onvif
