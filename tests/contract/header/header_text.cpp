// SPDX-License-Identifier: Apache-2.0
#include "header/header_text.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace header_text {

namespace {

std::string singleBlanks(std::string const &text) {
    std::string result;
    for (char const c : text) {
        bool const blank = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (!blank) {
            result += c;
        } else if (!result.empty() && result.back() != ' ') {
            result += ' ';
        }
    }
    while (!result.empty() && result.back() == ' ') {
        result.pop_back();
    }
    return result;
}

// The lines of a comment without its frame, so that its indentation stays comparable.
std::string commentText(std::string const &comment) {
    std::istringstream lines(comment);
    std::string line;
    std::string result;
    while (std::getline(lines, line)) {
        line = std::regex_replace(line, std::regex(R"(^ ?\* ?)"), "");
        result += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return result;
}

std::vector<Parameter> parseParameters(std::string const &list) {
    std::vector<Parameter> parameters;
    if (list == "void") {
        return parameters;
    }
    std::istringstream parts(list);
    std::string part;
    while (std::getline(parts, part, ',')) {
        static std::regex const shape(R"(^ ?(.*[ *])([A-Za-z_]\w*)$)");
        std::smatch match;
        if (!std::regex_match(part, match, shape)) {
            throw std::runtime_error("a parameter has no type and name: '" + part + "'");
        }
        parameters.push_back(
            {std::regex_replace(singleBlanks(match[1]), std::regex(R"(\* (?=\*))"), "*"), match[2]});
    }
    return parameters;
}

Declaration parseDeclaration(std::string const &text, std::string const &comment) {
    static std::regex const function(
        R"(^((?:KORVO_API_ACTION_ENGINE_EXPORT )?)((?:\w+ )+\**)(\w+) ?\((.*)\)((?: KORVO_API_NOEXCEPT)?)$)");
    static std::regex const callback(R"(^typedef void \(\*(\w+)\) ?\((.*)\)$)");
    Declaration declaration;
    declaration.text = text;
    declaration.comment = comment;
    std::smatch match;
    if (std::regex_match(text, match, callback)) {
        declaration.what = Declaration::What::callback_type;
        declaration.name = match[1];
        declaration.parameters = parseParameters(match[2]);
    } else if (std::regex_match(text, match, function)) {
        declaration.what = Declaration::What::function;
        declaration.exported = match[1].length() != 0;
        declaration.result = singleBlanks(match[2]);
        declaration.name = match[3];
        declaration.parameters = parseParameters(match[4]);
        declaration.no_throw = match[5].length() != 0;
    }
    return declaration;
}

}  // namespace

Header parse(std::string const &source) {
    static std::string const language_bracket = "extern \"C\" {";
    Header header;
    std::string declaration;
    std::string comment;
    bool preprocessed = false;
    int depth = 0;
    for (std::size_t at = 0; at < source.size();) {
        if (source.compare(at, 2, "/*") == 0) {
            std::size_t const end = source.find("*/", at);
            if (end == std::string::npos) {
                throw std::runtime_error("a comment has no end");
            }
            if (singleBlanks(declaration).empty()) {
                comment = commentText(source.substr(at + 2, end - at - 2));
                if (!preprocessed) {
                    header.opening = comment;
                }
            }
            at = end + 2;
        } else if (source[at] == '#' && (at == 0 || source[at - 1] == '\n')) {
            std::size_t const end = std::min(source.find('\n', at), source.size());
            std::string const line = source.substr(at, end - at);
            if (line.rfind("#include", 0) == 0) {
                header.includes.push_back(singleBlanks(line.substr(8)));
            }
            preprocessed = true;
            comment.clear();
            at = end;
        } else if (source.compare(at, language_bracket.size(), language_bracket) == 0) {
            at += language_bracket.size();
        } else if (source[at] == ';' && depth == 0) {
            header.declarations.push_back(parseDeclaration(singleBlanks(declaration), comment));
            declaration.clear();
            comment.clear();
            ++at;
        } else if (source[at] == '}' && depth == 0) {
            ++at;  // the end of the language bracket
        } else {
            depth += (source[at] == '{') - (source[at] == '}');
            declaration += source[at];
            ++at;
        }
    }
    if (!singleBlanks(declaration).empty()) {
        throw std::runtime_error("a declaration has no end: '" + singleBlanks(declaration) + "'");
    }
    return header;
}

std::string readFile(std::string const &path) {
    std::ifstream file(path);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file || content.str().empty()) {
        throw std::runtime_error("cannot read " + path);
    }
    return content.str();
}

std::string toString(std::vector<Parameter> const &parameters) {
    std::string result;
    for (Parameter const &parameter : parameters) {
        result += result.empty() ? "" : ", ";
        result += parameter.type + (parameter.type.back() == '*' ? "" : " ") + parameter.name;
    }
    return result;
}

}  // namespace header_text
