// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_HEADER_HEADER_TEXT_H
#define KORVO_TESTS_HEADER_HEADER_TEXT_H

// Reads a C header as text: its declarations, each with the comment right before it, and its includes. It
// knows just enough C for a header of plain prototypes, function pointer types and enumerations.

#include <string>
#include <vector>

namespace header_text {

struct Parameter {
    std::string type;  // with single blanks and the asterisks together: "char const *", "unsigned int ***"
    std::string name;
};

struct Declaration {
    enum class What { function, callback_type, other };

    What what = What::other;
    std::string name;       // of a function or callback type
    std::string result;     // of a function
    bool exported = false;  // carries the export macro
    bool no_throw = false;  // carries the no-throw macro
    std::vector<Parameter> parameters;
    std::string
        comment;       // text of the comment right before it, without the asterisks; empty if there is none
    std::string text;  // as it stands, with single blanks
};

struct Header {
    std::string opening;  // text of the last comment before the first preprocessor line
    std::vector<std::string> includes;
    std::vector<Declaration> declarations;
};

/// Throws std::runtime_error for a comment or declaration without an end.
Header parse(std::string const &source);

/// The content of a file; throws std::runtime_error when it cannot be read.
std::string readFile(std::string const &path);

/// "unsigned char block, char const *target": as parameters are written, for comparisons that a person reads.
std::string toString(std::vector<Parameter> const &parameters);

}  // namespace header_text

#endif
