// SPDX-License-Identifier: Apache-2.0
#include "writers/header_texts.h"

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace korvo::writers {
namespace {

using Lines = std::vector<std::string>;

Lines linesOf(std::string const &text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string trimmed(std::string const &text) {
    auto const begin = text.find_first_not_of(" \n");
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(" \n") - begin + 1);
}

void appendWords(std::string &text, std::string const &words) {
    text += (text.empty() ? "" : " ") + trimmed(words);
}

/// The lines of a comment without what makes them a comment.
Lines linesOfComment(std::string const &comment) {
    Lines lines = linesOf(std::regex_replace(comment, std::regex(R"(^\s*/\*+|\*/\s*$)"), ""));
    for (std::string &line : lines) {
        line = std::regex_replace(line, std::regex(R"(^ \* ?)"), "");
    }
    while (!lines.empty() && trimmed(lines.front()).empty()) {
        lines.erase(lines.begin());
    }
    while (!lines.empty() && trimmed(lines.back()).empty()) {
        lines.pop_back();
    }
    if (!lines.empty()) {
        lines.front() = trimmed(lines.front());
        lines.back().erase(lines.back().find_last_not_of(' ') + 1);
    }
    return lines;
}

/// "  name, name  text" and its further lines, which are indented more.
void readNames(Explanation &explanation, Lines const &section) {
    static std::regex const beginning(R"(  (\w+)(?:, (\w+))?  +(\S.*))");
    Lines current;
    for (std::string const &line : section) {
        std::smatch match;
        if (std::regex_match(line, match, beginning)) {
            current = {match[1]};
            if (match[2].matched) {
                current.push_back(match[2]);
            }
            for (std::string const &name : current) {
                explanation.names[name] = match[3];
            }
        } else {
            for (std::string const &name : current) {
                appendWords(explanation.names[name], line);
            }
        }
    }
}

Explanation explanationOf(std::string const &comment) {
    static std::regex const heading("(Inputs|Results|Ownership|Statuses|Log lines.*)");
    Explanation explanation;
    std::map<std::string, Lines> sections;
    std::string section;
    for (std::string const &line : linesOfComment(comment)) {
        if (std::regex_match(line, heading)) {
            section = line;
        } else if (section.empty()) {
            explanation.lines.push_back(line);
        } else {
            sections[section].push_back(line);
        }
    }
    while (!explanation.lines.empty() && explanation.lines.back().empty()) {
        explanation.lines.pop_back();
    }
    readNames(explanation, sections["Inputs"]);
    readNames(explanation, sections["Results"]);
    for (std::string const &line : sections["Statuses"]) {
        appendWords(explanation.statuses, line);
    }
    return explanation;
}

}  // namespace

void HeaderTexts::read(std::string const &header) {
    std::ifstream file(header);
    std::stringstream text;
    text << file.rdbuf();
    if (!file) {
        throw std::runtime_error("cannot read " + header);
    }
    Lines const lines = linesOf(text.str());
    readFunctions(lines);
    readStatuses(lines);
    readEnumerators(text.str());
}

/// A comment at the beginning of a line explains all functions up to the next one. A comment that begins with a line is
/// a heading.
void HeaderTexts::readFunctions(Lines const &lines) {
    static std::regex const declared(R"((?:^|.*[ *])(korvo_\w+)\((?!\*).*)");
    Explanation current;
    std::string comment;
    bool in_comment = false;
    for (std::string const &line : lines) {
        if (!in_comment && line.compare(0, 2, "/*") == 0) {
            in_comment = true;
            comment.clear();
        }
        if (in_comment) {
            comment += line + "\n";
            if (line.find("*/") != std::string::npos) {
                in_comment = false;
                bool const is_heading =
                    comment.compare(0, 5, "/* --") == 0 || comment.compare(0, 5, "/* ==") == 0;
                current = is_heading ? Explanation() : explanationOf(comment);
            }
            continue;
        }
        std::smatch match;
        if (std::regex_match(line, match, declared)) {
            functions_.emplace(match[1], current);
        }
    }
}

/// The table of the statuses.
void HeaderTexts::readStatuses(Lines const &lines) {
    static std::regex const beginning(R"( \*   \d+ +(KORVO_CORE_STATUS_\w+))");
    static std::regex const further(R"( \* {8,}(\S.*))");
    std::string status;
    for (std::string const &line : lines) {
        std::smatch match;
        if (std::regex_match(line, match, beginning)) {
            status = match[1];
            constants_[status].clear();
        } else if (!status.empty() && std::regex_match(line, match, further)) {
            appendWords(constants_[status], match[1]);
        } else {
            status.clear();
        }
    }
}

/// A comment behind an enumerator on its line, or in front of it.
void HeaderTexts::readEnumerators(std::string const &text) {
    static std::regex const at_end(R"(.*\b(\w+) = \d+, *)");
    static std::regex const at_begin(R"(\s*(\w+) = \d.*)");
    for (std::size_t end = text.find("*/"); end != std::string::npos; end = text.find("*/", end + 2)) {
        std::size_t const begin = text.rfind("/*", end);
        std::size_t const line = text.rfind('\n', begin) + 1;
        std::size_t const next = std::min(text.find_first_not_of(" \n", end + 2), text.size());
        std::string const before = text.substr(line, begin - line);
        std::string const after = text.substr(next, text.find('\n', next) - next);
        std::smatch match;
        if (std::regex_match(before, match, at_end) ||
            (trimmed(before).empty() && std::regex_match(after, match, at_begin))) {
            std::string explanation;
            for (std::string const &part : linesOf(text.substr(begin + 2, end - begin - 2))) {
                appendWords(explanation, part);
            }
            constants_.emplace(match[1], explanation);
        }
    }
}

Explanation const &HeaderTexts::function(std::string const &name) const {
    static Explanation const none;
    auto const found = functions_.find(name);
    return found == functions_.end() ? none : found->second;
}

std::string HeaderTexts::constant(std::string const &name) const {
    auto const found = constants_.find(name);
    return found == constants_.end() ? "" : found->second;
}

}  // namespace korvo::writers
