// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_SCANNER_H
#define KORVO_SIMULATOR_ONVIF_SCANNER_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "simulator/onvif/names.h"

namespace simulator::onvif {

/// A topic or a filter cannot be understood. what() says where, what is wrong, and what was probably meant.
class SyntaxError : public std::runtime_error {
  public:
    explicit SyntaxError(std::string const &what, std::size_t column = 0)
        : std::runtime_error(what), column_(column) {}

    /// In characters from 1 on; 0 where no place in the text is at fault.
    std::size_t column() const { return column_; }

  private:
    std::size_t column_;
};

/// Walks through a topic or a filter, token by token.
class Scanner {
  public:
    /// In bytes; what is longer was not written by a person, and is refused before it is looked at.
    static constexpr std::size_t longest_text = 32 * 1024;

    /// `what` names the text in errors. All three must outlive the scanner. Throws SyntaxError for a text that is too
    /// long.
    Scanner(char const *what, std::string_view text, Namespaces const &namespaces);

    std::size_t position() const { return position_; }
    bool atEnd() const { return position_ == text_.size(); }
    bool nextIs(std::string_view expected) const {
        return text_.substr(position_, expected.size()) == expected;
    }
    std::string_view rest() const { return text_.substr(position_); }

    void skipBlanks();
    void skip(std::size_t bytes) { position_ += bytes; }
    /// Goes past the expected text; false, where it was, when something else is next.
    bool accept(std::string_view expected);
    /// The same for a word, which ends where a name would.
    bool acceptWord(std::string_view expected);

    /// Reads a name with or without a prefix, which must have a namespace. Throws SyntaxError.
    Name name();

    /// The error at a place: "WHAT, column N: WORDS". Columns count characters from 1.
    SyntaxError error(std::size_t position, std::string const &words) const;
    SyntaxError error(std::string const &words) const { return error(position_, words); }

    /// The character at the current place in quotes for an error, or "the end".
    std::string shownNext() const;

  private:
    std::string_view part();

    char const *what_;
    std::string_view text_;
    Namespaces const &namespaces_;
    std::size_t position_ = 0;
};

}  // namespace simulator::onvif

#endif
