// SPDX-License-Identifier: Apache-2.0
#include "tool/namespaces.h"

#include <boost/json/value.hpp>
#include <map>

#include "tool/failure.h"

namespace tool {

Namespaces namespacesIn(std::string const &option, std::vector<std::string> const &words) {
    std::map<std::string, std::string> all = {{"tns1", topics_uri}, {"tt", schema_uri}};
    for (std::string const &word : words) {
        auto const end = word.find('=');
        if (end == std::string::npos || end == 0) {
            throw Failure(Exit::usage,
                          option + " is a prefix and what it stands for, and not \"" + word + "\"",
                          "write PREFIX=URI");
        }
        all[word.substr(0, end)] = word.substr(end + 1);
    }
    Namespaces namespaces;
    for (auto const &[prefix, uri] : all) {
        namespaces.keys.emplace_back(prefix);
        namespaces.uris.emplace_back(uri);
    }
    return namespaces;
}

}  // namespace tool
