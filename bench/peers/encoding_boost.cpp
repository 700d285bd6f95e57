// SPDX-License-Identifier: Apache-2.0
// Boost.JSON, as one writes it first: values, with their default storage.

#include <boost/json.hpp>
#include <stdexcept>
#include <utility>

#include "peers/encoding.h"

namespace {

namespace json = boost::json;

template <typename Number>
Number numberOf(json::object const &object, char const *name) {
    return json::value_to<Number>(object.at(name));
}

class BoostEncoding : public Encoding {
  public:
    std::string_view relayCommand(unsigned int action_id) override {
        return write({{"command", "Get_relay_action"}, {"action_id", action_id}});
    }

    std::string_view listsCommand() override { return write({{"command", "Get_actions"}}); }

    std::string_view answer(std::string_view command) override {
        json::value const value = json::parse(command);
        json::object const &object = value.as_object();
        json::string const &method = object.at("command").as_string();
        if (method == "Get_relay_action" &&
            numberOf<unsigned int>(object, "action_id") == contents::action_id) {
            return write({{"command", "Get_relay_action"},
                          {"status", 0},
                          {"action_name", contents::action_name},
                          {"relay_target", contents::relay_target},
                          {"config_mode", contents::mode},
                          {"config_normally_closed", contents::normally_closed},
                          {"config_repeat_cycles", contents::repeat_cycles},
                          {"config_on_time_ms", contents::on_time_ms},
                          {"config_off_time_ms", contents::off_time_ms}});
        }
        if (method == "Get_actions") {
            return write({{"command", "Get_actions"},
                          {"status", 0},
                          {"action_id", json::array(contents::ids.begin(), contents::ids.end())},
                          {"action_type", json::array(contents::types.begin(), contents::types.end())}});
        }
        throw std::runtime_error("an unknown command");
    }

    void readRelay(std::string_view response, Relay &relay) override {
        json::value const value = json::parse(response);
        json::object const &object = value.as_object();
        checkStatus(object);
        relay.setTexts(object.at("action_name").as_string(), object.at("relay_target").as_string());
        relay.config_mode = numberOf<unsigned int>(object, "config_mode");
        relay.config_normally_closed = object.at("config_normally_closed").as_bool() ? 1 : 0;
        relay.config_repeat_cycles = numberOf<unsigned int>(object, "config_repeat_cycles");
        relay.config_on_time_ms = numberOf<unsigned int>(object, "config_on_time_ms");
        relay.config_off_time_ms = numberOf<unsigned int>(object, "config_off_time_ms");
    }

    void readLists(std::string_view response, Lists &lists) override {
        json::value const value = json::parse(response);
        json::object const &object = value.as_object();
        checkStatus(object);
        read(object.at("action_id").as_array(), lists.ids);
        read(object.at("action_type").as_array(), lists.types);
    }

    std::string_view event() override {
        return write({{"event", "Action_completed"},
                      {"action_id", contents::action_id},
                      {"action_name", contents::action_name},
                      {"success", true}});
    }

    void readEvent(std::string_view text, Event &event) override {
        json::value const value = json::parse(text);
        json::object const &object = value.as_object();
        event.action_id = numberOf<unsigned int>(object, "action_id");
        event.action_name = object.at("action_name").as_string();
        event.success = object.at("success").as_bool();
    }

  private:
    static void checkStatus(json::object const &object) {
        if (numberOf<unsigned int>(object, "status") != 0) {
            throw std::runtime_error("the service refused");
        }
    }

    static void read(json::array const &array, std::vector<unsigned int> &numbers) {
        numbers.clear();
        numbers.reserve(array.size());
        for (json::value const &number : array) {
            numbers.push_back(json::value_to<unsigned int>(number));
        }
    }

    std::string_view write(
        std::initializer_list<std::pair<json::string_view, json::value_ref>> const &members) {
        text_ = json::serialize(json::object(members));
        return text_;
    }

    std::string text_;
};

}  // namespace

JsonLibrary const boost_json = {"Boost.JSON", [] { return std::unique_ptr<Encoding>(new BoostEncoding); }};
