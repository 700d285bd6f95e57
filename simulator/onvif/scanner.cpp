// SPDX-License-Identifier: Apache-2.0
#include "simulator/onvif/scanner.h"

#include <algorithm>

#include "simulator/log.h"

namespace simulator::onvif {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Letters beyond ASCII are all taken: a name that differs matches nothing.
bool beginsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool continuesName(char c) {
    return beginsName(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

bool continuesCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xc0U) == 0x80U;
}

}  // namespace

Scanner::Scanner(char const *what, std::string_view text, Namespaces const &namespaces)
    : what_(what), text_(text), namespaces_(namespaces) {
    if (text.size() > longest_text) {
        throw SyntaxError(std::string(what) + ": it has " + std::to_string(text.size()) + " bytes, and " +
                          std::to_string(longest_text) + " are the most");
    }
}

void Scanner::skipBlanks() {
    while (!atEnd() && isBlank(text_[position_])) {
        ++position_;
    }
}

bool Scanner::accept(std::string_view expected) {
    if (!nextIs(expected)) {
        return false;
    }
    skip(expected.size());
    return true;
}

bool Scanner::acceptWord(std::string_view expected) {
    std::string_view const following = rest().substr(std::min(expected.size(), rest().size()));
    return (following.empty() || !continuesName(following.front())) && accept(expected);
}

std::string_view Scanner::part() {
    std::size_t const start = position_;
    if (!atEnd() && beginsName(text_[position_])) {
        while (!atEnd() && continuesName(text_[position_])) {
            ++position_;
        }
    }
    return text_.substr(start, position_ - start);
}

Name Scanner::name() {
    std::size_t const start = position_;
    std::string_view const first = part();
    if (first.empty()) {
        throw error("a name is expected here, not " + shownNext());
    }
    if (!accept(":")) {
        return {"", std::string(first)};
    }
    std::string_view const second = part();
    if (second.empty()) {
        throw error("a name is expected behind the prefix " + quoted(first) + ", not " + shownNext());
    }
    auto const uri = namespaces_.uriOf(first);
    if (!uri) {
        throw error(start,
                    "the prefix " + quoted(first) +
                        " stands for no namespace; give it with its URI in the lists of namespace keys "
                        "and URIs");
    }
    return {std::string(*uri), std::string(second)};
}

SyntaxError Scanner::error(std::size_t position, std::string const &words) const {
    auto const characters =
        std::count_if(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(position),
                      [](char c) { return !continuesCharacter(c); });
    return SyntaxError(std::string(what_) + ", column " + std::to_string(characters + 1) + ": " + words,
                       static_cast<std::size_t>(characters + 1));
}

std::string Scanner::shownNext() const {
    if (atEnd()) {
        return "the end";
    }
    std::size_t end = position_ + 1;
    while (end < text_.size() && continuesCharacter(text_[end])) {
        ++end;
    }
    return quoted(text_.substr(position_, end - position_));
}

}  // namespace simulator::onvif
