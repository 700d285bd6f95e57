// SPDX-License-Identifier: Apache-2.0
#include "tool/secrets.h"

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

namespace tool {

bool isSecret(std::string const &member) {
    return member == "password";
}

void hideSecrets(Settings const &settings, boost::json::object &members) {
    if (settings.show_secrets) {
        return;
    }
    for (auto &member : members) {
        if (isSecret(std::string(member.key()))) {
            member.value() = nullptr;
        } else if (member.value().is_object()) {
            hideSecrets(settings, member.value().get_object());
        } else if (member.value().is_array()) {
            for (auto &element : member.value().get_array()) {
                if (element.is_object()) {
                    hideSecrets(settings, element.get_object());
                }
            }
        }
    }
}

}  // namespace tool
