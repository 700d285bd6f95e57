// SPDX-License-Identifier: Apache-2.0
#include "peers/contents.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <numeric>
#include <stdexcept>

namespace {

char *copyOf(std::string_view text) {
    char *const copy = strndup(text.data(), text.size());
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    return copy;
}

void expect(bool holds, char const *what) {
    if (!holds) {
        throw std::runtime_error(std::string("a side hands out another ") + what + " than was sent");
    }
}

std::array<unsigned int, contents::actions> countedFromOne() {
    std::array<unsigned int, contents::actions> numbers{};
    std::iota(numbers.begin(), numbers.end(), 1U);
    return numbers;
}

std::array<unsigned int, contents::actions> relayTypes() {
    std::array<unsigned int, contents::actions> numbers{};
    numbers.fill(contents::relay_type);
    return numbers;
}

}  // namespace

namespace contents {

std::array<unsigned int, actions> const ids = countedFromOne();
std::array<unsigned int, actions> const types = relayTypes();

}  // namespace contents

Relay::~Relay() {
    std::free(action_name);
    std::free(relay_target);
}

void Relay::setTexts(std::string_view name, std::string_view target) {
    action_name = copyOf(name);
    relay_target = copyOf(target);
}

void Relay::check() const {
    expect(action_name != nullptr && relay_target != nullptr &&
               std::strcmp(action_name, contents::action_name) == 0 &&
               std::strcmp(relay_target, contents::relay_target) == 0 && config_mode == contents::mode &&
               (config_normally_closed != 0) == contents::normally_closed &&
               config_repeat_cycles == contents::repeat_cycles && config_on_time_ms == contents::on_time_ms &&
               config_off_time_ms == contents::off_time_ms,
           "relay");
}

void Lists::check() const {
    expect(std::equal(ids.begin(), ids.end(), contents::ids.begin(), contents::ids.end()) &&
               std::equal(types.begin(), types.end(), contents::types.begin(), contents::types.end()),
           "list");
}

void Event::check() const {
    expect(action_id == contents::action_id && action_name == contents::action_name && success, "event");
}
