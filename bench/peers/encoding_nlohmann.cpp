// SPDX-License-Identifier: Apache-2.0
// nlohmann's JSON for Modern C++.

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "peers/encoding.h"

namespace {

using nlohmann::json;

class NlohmannEncoding : public Encoding {
  public:
    std::string_view relayCommand(unsigned int action_id) override {
        return write({{"command", "Get_relay_action"}, {"action_id", action_id}});
    }

    std::string_view listsCommand() override { return write({{"command", "Get_actions"}}); }

    std::string_view answer(std::string_view command) override {
        json const object = json::parse(command);
        std::string const &method = object.at("command").get_ref<std::string const &>();
        if (method == "Get_relay_action" && object.at("action_id") == contents::action_id) {
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
                          {"action_id", contents::ids},
                          {"action_type", contents::types}});
        }
        throw std::runtime_error("an unknown command");
    }

    void readRelay(std::string_view response, Relay &relay) override {
        json const object = json::parse(response);
        checkStatus(object);
        relay.setTexts(object.at("action_name").get_ref<std::string const &>(),
                       object.at("relay_target").get_ref<std::string const &>());
        relay.config_mode = object.at("config_mode");
        relay.config_normally_closed = object.at("config_normally_closed").get<bool>() ? 1 : 0;
        relay.config_repeat_cycles = object.at("config_repeat_cycles");
        relay.config_on_time_ms = object.at("config_on_time_ms");
        relay.config_off_time_ms = object.at("config_off_time_ms");
    }

    void readLists(std::string_view response, Lists &lists) override {
        json const object = json::parse(response);
        checkStatus(object);
        object.at("action_id").get_to(lists.ids);
        object.at("action_type").get_to(lists.types);
    }

    std::string_view event() override {
        return write({{"event", "Action_completed"},
                      {"action_id", contents::action_id},
                      {"action_name", contents::action_name},
                      {"success", true}});
    }

    void readEvent(std::string_view text, Event &event) override {
        json const object = json::parse(text);
        event.action_id = object.at("action_id");
        event.action_name = object.at("action_name");
        event.success = object.at("success");
    }

  private:
    static void checkStatus(json const &object) {
        if (object.at("status") != 0) {
            throw std::runtime_error("the service refused");
        }
    }

    std::string_view write(json const &object) {
        text_ = object.dump();
        return text_;
    }

    std::string text_;
};

}  // namespace

JsonLibrary const nlohmann_json = {"nlohmann",
                                   [] { return std::unique_ptr<Encoding>(new NlohmannEncoding); }};
