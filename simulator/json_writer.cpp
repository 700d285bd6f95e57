// SPDX-License-Identifier: Apache-2.0
#include "simulator/json_writer.h"

#include <algorithm>
#include <boost/json/serializer.hpp>

namespace simulator {

void JsonWriter::number(std::string_view name, std::uint32_t value) {
    member(name);
    append(value);
}

void JsonWriter::flag(std::string_view name, bool value) {
    member(name);
    out_ += value ? "true" : "false";
}

void JsonWriter::text(std::string_view name, std::string_view value) {
    member(name);
    append(value);
}

void JsonWriter::member(std::string_view name) {
    if (!first_) {
        out_ += ',';
    }
    first_ = false;
    out_ += '"';
    out_ += name;
    out_ += "\":";
}

void JsonWriter::append(std::uint32_t value) {
    char digits[most_digits];
    auto const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    out_.append(digits, end);
}

void JsonWriter::append(std::string_view value) {
    bool const plain = std::none_of(value.begin(), value.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
    });
    if (plain) {
        out_ += '"';
        out_ += value;
        out_ += '"';
        return;
    }
    boost::json::serializer serializer;
    serializer.reset(boost::json::string_view(value.data(), value.size()));
    char piece[512];
    while (!serializer.done()) {
        auto const written = serializer.read(piece, sizeof piece);
        out_.append(written.data(), written.size());
    }
}

}  // namespace simulator
