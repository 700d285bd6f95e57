// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CONTROL_MEMBERS_H
#define KORVO_SIMULATOR_CONTROL_MEMBERS_H

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "simulator/refused.h"
#include "simulator/values.h"

namespace simulator::control {

/// The members of a command to the control service. All throw Refused (status 1) for one that is missing or of another
/// type.
class Members {
  public:
    explicit Members(boost::json::object const &object) : object_(object) {}

    bool has(char const *name) const { return object_.contains(name); }
    boost::json::object const &object() const { return object_; }

    std::string text(char const *name) const {
        boost::json::value const &value = at(name);
        if (!value.is_string()) {
            throw wrong(name, "a string");
        }
        return std::string(value.get_string());
    }
    std::string text(char const *name, char const *otherwise) const {
        return has(name) ? text(name) : otherwise;
    }

    bool flag(char const *name) const {
        if (!has(name)) {
            return false;
        }
        if (!at(name).is_bool()) {
            throw wrong(name, "true or false");
        }
        return at(name).get_bool();
    }

    std::optional<std::uint32_t> optionalNumber(char const *name) const {
        return has(name) ? std::optional<std::uint32_t>(number(name)) : std::nullopt;
    }
    std::uint32_t number(char const *name) const { return wholeNumber(at(name), name); }

    Texts texts(char const *name) const {
        Texts list;
        for (boost::json::value const &element : array(name)) {
            if (!element.is_string()) {
                throw wrong(name, "an array of strings");
            }
            list.emplace_back(element.get_string());
        }
        return list;
    }
    Numbers numbers(char const *name) const {
        Numbers list;
        for (boost::json::value const &element : array(name)) {
            list.push_back(wholeNumber(element, name));
        }
        return list;
    }

    boost::json::object const &objectAt(char const *name) const {
        if (!at(name).is_object()) {
            throw wrong(name, "an object");
        }
        return at(name).get_object();
    }

  private:
    static Refused wrong(char const *name, char const *expected) {
        return malformed(std::string("the member \"") + name + "\" must be " + expected);
    }
    static std::uint32_t wholeNumber(boost::json::value const &value, char const *name) {
        boost::json::error_code error;
        auto const number = value.is_number() ? value.to_number<std::uint32_t>(error)
                                              : (error.assign(1, error.category()), 0U);
        if (error) {
            throw wrong(name, "a whole number from 0 to 4294967295");
        }
        return number;
    }
    boost::json::array const &array(char const *name) const {
        if (!at(name).is_array()) {
            throw wrong(name, "an array");
        }
        return at(name).get_array();
    }
    boost::json::value const &at(char const *name) const {
        boost::json::value const *const value = object_.if_contains(name);
        if (value == nullptr) {
            throw malformed(std::string("the member \"") + name + "\" is missing");
        }
        return *value;
    }

    boost::json::object const &object_;
};

}  // namespace simulator::control

#endif
