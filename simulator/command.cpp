// SPDX-License-Identifier: Apache-2.0
#include "simulator/command.h"

#include <boost/json/object.hpp>
#include <boost/json/storage_ptr.hpp>

#include "simulator/log.h"
#include "simulator/methods.h"
#include "simulator/refused.h"

namespace simulator {

namespace json = boost::json;

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
    readMembers(value_->get_object(), methodAt(*method_).inputs, inputs_);
    return inputs_;
}

}  // namespace simulator
