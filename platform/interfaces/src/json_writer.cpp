// SPDX-License-Identifier: Apache-2.0
#include "json_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "json_reader.h"
#include "utf8.h"

namespace json_text {

namespace {

/// Up to here every integer has a double of its own, so that an integer's digits say exactly what is held.
constexpr double largest_exact_integer = 9007199254740992.0;

class Writer final : public json::ConstVisitor {
  public:
    explicit Writer(std::string &out) : out_(out) {}

    std::string const &why() const { return why_; }

    void Visit(json::Object const &object) override {
        if (!enter()) {
            return;
        }
        char separator = '{';
        for (json::Object::Member const &member : object) {
            out_ += separator;
            separator = ',';
            writeText(member.name);
            out_ += ':';
            member.element.Accept(*this);
        }
        out_ += object.empty() ? "{}" : "}";
        --depth_;
    }

    void Visit(json::Array const &array) override {
        if (!enter()) {
            return;
        }
        char separator = '[';
        for (json::UnknownElement const &element : array) {
            out_ += separator;
            separator = ',';
            element.Accept(*this);
        }
        out_ += array.empty() ? "[]" : "]";
        --depth_;
    }

    void Visit(json::String const &text) override { writeText(text.value()); }

    void Visit(json::Number const &number) override {
        double const value = number.value();
        std::array<char, 32> digits;
        char *const begin = digits.data();
        char *const end = begin + digits.size();
        char *stop = begin;
        if (std::fabs(value) <= largest_exact_integer && std::trunc(value) == value) {
            stop = std::to_chars(begin, end, static_cast<std::int64_t>(value)).ptr;
        } else if (std::isfinite(value)) {
            stop = std::to_chars(begin, end, value).ptr;
        } else {
            why_ = "a number is infinite or no number";
        }
        out_.append(begin, static_cast<std::size_t>(stop - begin));
    }

    void Visit(json::Boolean const &flag) override { out_ += flag.value() ? "true" : "false"; }
    void Visit(json::Null const &) override { out_ += "null"; }

  private:
    bool enter() {
        if (depth_ == deepest_nesting) {
            why_ = "its values are nested more than " + std::to_string(deepest_nesting) + " deep";
            return false;
        }
        ++depth_;
        return true;
    }

    void writeText(std::string_view text) {
        if (!isUtf8(text)) {
            why_ = "a text is not UTF-8";
            return;
        }
        out_ += '"';
        std::size_t plain = 0;
        for (std::size_t place = 0; place < text.size(); ++place) {
            auto const code = static_cast<unsigned char>(text[place]);
            if (code >= 0x20 && code != '"' && code != '\\') {
                continue;
            }
            out_.append(text, plain, place - plain);
            plain = place + 1;
            writeEscape(code);
        }
        out_.append(text, plain, text.size() - plain);
        out_ += '"';
    }

    void writeEscape(unsigned char code) {
        constexpr std::string_view digits = "0123456789abcdef";
        switch (code) {
            case '"':
                out_ += "\\\"";
                break;
            case '\\':
                out_ += "\\\\";
                break;
            case '\n':
                out_ += "\\n";
                break;
            case '\r':
                out_ += "\\r";
                break;
            case '\t':
                out_ += "\\t";
                break;
            default:
                out_ += "\\u00";
                out_ += digits[code >> 4];
                out_ += digits[code & 0x0f];
        }
    }

    std::string &out_;
    std::size_t depth_ = 0;
    std::string why_;
};

}  // namespace

std::string write(json::Object const &object, std::string &out) {
    Writer writer(out);
    static_cast<json::ConstVisitor &>(writer).Visit(object);
    return writer.why();
}

}  // namespace json_text
