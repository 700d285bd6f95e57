// SPDX-License-Identifier: Apache-2.0
#include "tool/settings.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "tool/failure.h"

namespace tool {
namespace {

template <typename Number>
std::optional<Number> wholeNumber(std::string const &word) {
    Number number = 0;
    auto const read = std::from_chars(word.data(), word.data() + word.size(), number);
    if (read.ec != std::errc() || read.ptr != word.data() + word.size()) {
        return {};
    }
    return number;
}

}  // namespace

std::string Arguments::text(std::string const &name) const {
    auto const &words = texts(name);
    return words.empty() ? "" : words.back();
}

std::vector<std::string> const &Arguments::texts(std::string const &name) const {
    static std::vector<std::string> const none;
    auto const found = given_.find(name);
    return found == given_.end() ? none : found->second;
}

unsigned int Arguments::number(std::string const &name) const {
    return numberOf(name, text(name));
}

std::vector<unsigned int> Arguments::numbers(std::string const &name) const {
    std::vector<unsigned int> result;
    for (std::string const &word : texts(name)) {
        result.push_back(numberOf(name, word));
    }
    return result;
}

bool Arguments::flag(std::string const &name) const {
    if (!has(name)) {
        return false;
    }
    std::string const word = text(name);
    for (char const *yes : {"true", "1", "yes", "on"}) {
        if (word == yes) {
            return true;
        }
    }
    for (char const *no : {"false", "0", "no", "off"}) {
        if (word == no) {
            return false;
        }
    }
    throw Failure(Exit::usage, name + " is either true or false, and not \"" + word + "\"",
                  "give " + name + " alone, or " + name + "=false");
}

unsigned int numberOf(std::string const &option, std::string const &word) {
    auto const number = wholeNumber<unsigned int>(word);
    if (!number) {
        throw Failure(Exit::usage,
                      option + " is a whole number from 0 to 4294967295, and not \"" + word + "\"",
                      "give digits only, as in 42");
    }
    return *number;
}

std::optional<std::chrono::milliseconds> durationOf(std::string const &option, std::string const &word) {
    if (word == "forever") {
        return {};
    }
    struct Unit {
        char const *name;
        long long milliseconds;
    };
    auto const end_of_digits = std::min(word.find_first_not_of("0123456789"), word.size());
    auto const count = wholeNumber<long long>(word.substr(0, end_of_digits));
    for (Unit const unit : {Unit{"ms", 1}, Unit{"s", 1000}, Unit{"m", 60'000}, Unit{"h", 3'600'000}}) {
        if (count && word.substr(end_of_digits) == unit.name && *count > 0 &&
            *count <= std::numeric_limits<int>::max() / unit.milliseconds) {
            return std::chrono::milliseconds(*count * unit.milliseconds);
        }
    }
    throw Failure(Exit::usage, option + " is a time with its unit, and not \"" + word + "\"",
                  "give something like 250ms, 5s, 2m, 1h, or forever");
}

}  // namespace tool
