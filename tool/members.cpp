// SPDX-License-Identifier: Apache-2.0
#include "tool/members.h"

#include <boost/json/value.hpp>

namespace tool {

boost::json::array const &listIn(boost::json::object const &members, char const *name) {
    static boost::json::array const none;
    auto const *const found = members.if_contains(name);
    return found != nullptr && found->is_array() ? found->get_array() : none;
}

std::string textIn(boost::json::object const &members, char const *name) {
    auto const *const found = members.if_contains(name);
    return found != nullptr && found->is_string() ? std::string(found->get_string()) : "";
}

}  // namespace tool
