// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_RECORDED_H
#define KORVO_TESTS_UNIT_SIMULATOR_RECORDED_H

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>
#include <chrono>
#include <optional>
#include <string>

#include "simulator/time/moment.h"

namespace simulator::tests {

/// A capture in the making, of one peer, line by line.
class Captured {
  public:
    Captured &after(std::chrono::milliseconds time) {
        time_ += time;
        return *this;
    }
    /// A command, whose request is its number from 1, and its answer.
    Captured &command(std::string const &text) {
        ++request_;
        return line("a", std::to_string(request_), "to service", text);
    }
    Captured &answer(std::string const &text) {
        return line("a", std::to_string(request_), "from service", text);
    }
    Captured &event(std::string const &text) { return line(none, none, "from service", text); }

    static constexpr std::nullopt_t none = std::nullopt;
    using Text = std::optional<std::string>;
    Captured &line(Text const &peer, Text const &request, char const *direction, Text const &text) {
        boost::json::object object{{"time", preciseMomentText(time_)}, {"peer", told(peer)}};
        if (request || !peer) {
            object["request"] = told(request);
        }
        object["direction"] = direction;
        object["text"] = told(text);
        text_ += boost::json::serialize(object) + "\n";
        return *this;
    }

    std::string const &text() const { return text_; }

  private:
    static boost::json::value told(Text const &text) {
        return text ? boost::json::value(boost::json::string(*text)) : boost::json::value(nullptr);
    }

    Wall time_{std::chrono::seconds(1795417140)};
    unsigned int request_ = 0;
    std::string text_;
};

}  // namespace simulator::tests

#endif
