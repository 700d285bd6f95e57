// SPDX-License-Identifier: Apache-2.0
#include "simulator/command.h"

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/storage_ptr.hpp>
#include <string>

#include "simulator/log.h"
#include "simulator/methods.h"
#include "simulator/refused.h"

namespace simulator {

namespace json = boost::json;

namespace {

bool holdsZero(Value const &value) {
    auto const in_text = [](std::string const &text) { return text.find('\0') != std::string::npos; };
    if (auto const *const text = std::get_if<std::string>(&value)) {
        return in_text(*text);
    }
    auto const *const texts = std::get_if<Texts>(&value);
    return texts != nullptr && std::any_of(texts->begin(), texts->end(), in_text);
}

}  // namespace

CommandReader::CommandReader()
    : parser_(json::storage_ptr(), json::parse_options(), parser_memory_, sizeof parser_memory_) {}

void CommandReader::read(std::string_view text) {
    name_ = {};
    method_.reset();
    // The old value goes before its memory does.
    value_.reset();
    parser_.reset();
    // Made anew, since a released one remembers how large its last block was and asks for twice as much the next time.
    resource_.emplace(value_memory_, sizeof value_memory_);

    parser_.reset(&*resource_);
    json::error_code error;
    parser_.write(text.data(), text.size(), error);
    if (error) {
        throw malformed("the command is no JSON text: " + error.message());
    }
    value_.emplace(parser_.release());

    json::object const *const object = value_->if_object();
    if (object == nullptr) {
        throw malformed("the command is no JSON object");
    }
    json::value const *const command = object->if_contains("command");
    if (command == nullptr || !command->is_string()) {
        throw malformed("the command has no text \"command\" that names a method");
    }
    name_ = std::string_view(command->get_string().data(), command->get_string().size());
    method_ = findMethod(name_);
    if (!method_) {
        throw unsupported("there is no method " + quoted(name_));
    }
}

Values &CommandReader::inputs() {
    operations::Member const *const row = methodAt(*method_).inputs;
    readMembers(value_->get_object(), row, inputs_);
    for (std::size_t n = 0; n < inputs_.size(); ++n) {
        if (holdsZero(inputs_[n])) {
            // Clients read texts as C texts: what comes behind it would be stored and never be seen again.
            throw malformed(std::string("the member \"") + row[n].name + "\" holds the character U+0000");
        }
    }
    return inputs_;
}

}  // namespace simulator
