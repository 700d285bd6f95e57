// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_CONTENTS_H
#define KORVO_BENCH_PEERS_CONTENTS_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

// What all sides of a comparison exchange, whatever they write it in.

/// The results of Get_relay_action as a C caller gets them.
struct Relay {
    char *action_name = nullptr;
    char *relay_target = nullptr;
    unsigned int config_mode = 0;
    unsigned char config_normally_closed = 0;
    unsigned int config_repeat_cycles = 0;
    unsigned int config_on_time_ms = 0;
    unsigned int config_off_time_ms = 0;

    Relay() = default;
    Relay(Relay const &) = delete;
    Relay &operator=(Relay const &) = delete;
    ~Relay();

    /// Copies the texts. Throws std::bad_alloc.
    void setTexts(std::string_view name, std::string_view target);
    /// Throws std::runtime_error when it holds something else than the service keeps.
    void check() const;
};

/// The results of Get_actions, one block a list.
struct Lists {
    std::vector<unsigned int> ids;
    std::vector<unsigned int> types;

    /// Throws std::runtime_error when they hold something else than the service keeps.
    void check() const;
};

/// What Action_completed tells.
struct Event {
    unsigned int action_id = 0;
    std::string action_name;
    bool success = false;

    /// Throws std::runtime_error unless it tells what is published.
    void check() const;
};

namespace contents {

constexpr char action_name[] = "open the gate";
constexpr char relay_target[] = "relay 1";
constexpr unsigned int mode = 1;
constexpr bool normally_closed = true;
constexpr unsigned int repeat_cycles = 3;
constexpr unsigned int on_time_ms = 500;
constexpr unsigned int off_time_ms = 250;

/// The action that is asked for; the service keeps it, and relay actions alone.
constexpr unsigned int action_id = 7;
constexpr std::size_t actions = 256;
constexpr unsigned int relay_type = 9;
/// From 1 to the number of actions, and the type of each.
extern std::array<unsigned int, actions> const ids;
extern std::array<unsigned int, actions> const types;

}  // namespace contents

#endif
