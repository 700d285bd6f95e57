// SPDX-License-Identifier: Apache-2.0
#include "tool/output.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/json/serialize.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tool/failure.h"
#include "tool/whole_file.h"

namespace tool {
namespace output {

void write(std::string const &text) {
    int const problem = writeAll(STDOUT_FILENO, text);
    if (problem == EPIPE) {
        throw ReaderGone();
    }
    if (problem != 0) {
        throw Failure(Exit::other, std::string("cannot write to standard output: ") + std::strerror(problem),
                      "make room, or send the output elsewhere");
    }
}

void line(std::string const &text) {
    write(text + "\n");
}

void json(boost::json::value const &value) {
    line(boost::json::serialize(value));
}

bool isTerminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

bool isColoured() {
    char const *const refused = std::getenv("NO_COLOR");
    return isTerminal() && (refused == nullptr || *refused == '\0');
}

void table(std::vector<std::string> const &heading, std::vector<std::vector<std::string>> const &rows) {
    std::vector<std::size_t> widths;
    for (std::string const &cell : heading) {
        widths.push_back(widthOf(cell));
    }
    for (auto const &row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], widthOf(row[column]));
        }
    }
    std::string text;
    auto const append = [&](std::vector<std::string> const &row) {
        std::size_t blanks = 0;
        for (std::size_t column = 0; column < row.size(); ++column) {
            if (!row[column].empty()) {
                text.append(blanks, ' ');
                text += row[column];
                blanks = 0;
            }
            blanks += widths[column] - widthOf(row[column]) + 2;
        }
        text += '\n';
    };
    append(heading);
    for (auto const &row : rows) {
        append(row);
    }
    write(text);
}

void pairs(std::vector<std::pair<std::string, std::string>> const &rows) {
    std::size_t width = 0;
    for (auto const &[name, value] : rows) {
        width = value.empty() ? width : std::max(width, widthOf(name));
    }
    std::string text;
    for (auto const &[name, value] : rows) {
        text += name;
        if (!value.empty()) {
            text += std::string(width - widthOf(name) + 2, ' ') + value;
        }
        text += '\n';
    }
    write(text);
}

}  // namespace output

std::size_t widthOf(std::string const &text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char character) {
        return (static_cast<unsigned char>(character) & 0xC0U) != 0x80U;
    }));
}

std::string printable(std::string const &text) {
    constexpr char digits[] = "0123456789abcdef";
    std::string result;
    for (char const character : text) {
        auto const code = static_cast<unsigned char>(character);
        if (character == '\n') {
            result += "\\n";
        } else if (code < 0x20U || code == 0x7FU) {
            result += std::string("\\x") + digits[code >> 4U] + digits[code & 15U];
        } else {
            result += character;
        }
    }
    return result;
}

std::string cut(std::string const &text) {
    constexpr std::size_t longest = 40;
    if (widthOf(text) <= longest) {
        return text;
    }
    std::size_t end = 0;
    for (std::size_t characters = 0; characters < longest; ++characters) {
        ++end;
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
            ++end;
        }
    }
    return text.substr(0, end) + "...";
}

namespace {

constexpr std::size_t short_line = 100;

void prettyInto(std::string &text, boost::json::value const &value, std::size_t indent) {
    std::string const on_one_line = boost::json::serialize(value);
    bool const is_short = on_one_line.size() + indent <= short_line;
    std::string const margin(indent + 2, ' ');
    char const *separator = "\n";
    if (value.is_object() && !value.get_object().empty() && (indent == 0 || !is_short)) {
        text += '{';
        for (auto const &member : value.get_object()) {
            text += separator + margin + boost::json::serialize(boost::json::value(member.key())) + ": ";
            prettyInto(text, member.value(), indent + 2);
            separator = ",\n";
        }
        text += "\n" + std::string(indent, ' ') + "}";
    } else if (value.is_array() && !is_short) {
        text += '[';
        for (auto const &element : value.get_array()) {
            text += separator + margin;
            prettyInto(text, element, indent + 2);
            separator = ",\n";
        }
        text += "\n" + std::string(indent, ' ') + "]";
    } else {
        text += on_one_line;
    }
}

}  // namespace

std::string pretty(boost::json::value const &value) {
    std::string text;
    prettyInto(text, value, 0);
    return text;
}

std::string inWords(boost::json::value const &value) {
    if (value.is_string()) {
        return printable(std::string(value.get_string()));
    }
    if (value.is_bool()) {
        return value.get_bool() ? "yes" : "no";
    }
    if (value.is_null()) {
        return "(hidden)";
    }
    if (value.is_double()) {
        std::array<char, 32> text = {};
        (void)std::snprintf(text.data(), text.size(), "%.3g", value.get_double());
        return text.data();
    }
    if (value.is_array()) {
        std::string text;
        for (auto const &element : value.get_array()) {
            text += (text.empty() ? "" : ", ") + inWords(element);
        }
        return text;
    }
    if (value.is_object()) {
        std::string text;
        for (auto const &member : value.get_object()) {
            std::string const words = inWords(member.value());
            text += (text.empty() ? "" : ", ") + std::string(member.key()) + " " +
                    (words.empty()                ? "none"
                     : member.value().is_object() ? "(" + words + ")"
                                                  : words);
        }
        return text;
    }
    return boost::json::serialize(value);
}

}  // namespace tool
