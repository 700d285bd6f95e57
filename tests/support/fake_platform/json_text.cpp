// SPDX-License-Identifier: Apache-2.0
#include "fake_platform/json_text.h"

#include <boost/json.hpp>

namespace fake_platform {

namespace {

class Writer : public json::ConstVisitor {
  public:
    boost::json::value result;

    static boost::json::value write(json::UnknownElement const &element) {
        Writer writer;
        element.Accept(writer);
        return writer.result;
    }

    void Visit(json::Object const &object) override {
        boost::json::object members;
        for (json::Object::Member const &member : object) {
            members[member.name] = write(member.element);
        }
        result = std::move(members);
    }
    void Visit(json::Array const &array) override {
        boost::json::array elements;
        for (json::UnknownElement const &element : array) {
            elements.push_back(write(element));
        }
        result = std::move(elements);
    }
    void Visit(json::String const &text) override { result = text.value(); }
    void Visit(json::Number const &number) override { result = number.value(); }
    void Visit(json::Boolean const &flag) override { result = flag.value(); }
    void Visit(json::Null const &) override { result = nullptr; }
};

json::UnknownElement read(boost::json::value const &value) {
    if (value.is_object()) {
        json::Object object;
        for (auto const &member : value.get_object()) {
            object[std::string(member.key())] = read(member.value());
        }
        return object;
    }
    if (value.is_array()) {
        json::Array array;
        for (boost::json::value const &element : value.get_array()) {
            array.Insert(read(element));
        }
        return array;
    }
    if (value.is_string()) {
        return json::String(std::string(value.get_string()));
    }
    if (value.is_number()) {
        return json::Number(value.to_number<double>());
    }
    if (value.is_bool()) {
        return json::Boolean(value.get_bool());
    }
    return json::Null();
}

}  // namespace

std::string textOf(json::Object const &object) {
    Writer writer;
    writer.Visit(object);
    return boost::json::serialize(writer.result);
}

bool parse(std::string const &text, json::Object &object) {
    boost::json::error_code error;
    boost::json::value const value = boost::json::parse(text, error);
    if (error || !value.is_object()) {
        return false;
    }
    object = read(value).CastTo<json::Object>();
    return true;
}

}  // namespace fake_platform
