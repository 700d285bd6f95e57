// SPDX-License-Identifier: Apache-2.0
#include "by_hand.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <stdexcept>

#include "korvo_core.h"

namespace by_hand {

namespace {

/// Reads a text from its beginning to its end, whose members stand in a known order.
class Reader {
  public:
    explicit Reader(char const *text) : place_(text) {}

    /// What comes next. The text ends with a zero byte, so nothing behind it is compared.
    template <std::size_t size>
    void expect(char const (&text)[size]) {
        if (std::strncmp(place_, text, size - 1) != 0) {
            throw std::runtime_error(std::string("expected ") + text + " and found " + place_);
        }
        place_ += size - 1;
    }

    unsigned int number() {
        unsigned int value = 0;
        for (; *place_ >= '0' && *place_ <= '9'; ++place_) {
            value = value * 10 + static_cast<unsigned int>(*place_ - '0');
        }
        return value;
    }

    std::string_view text() {
        expect("\"");
        char const *const end = std::strchr(place_, '"');
        if (end == nullptr) {
            throw std::runtime_error("a text has no end");
        }
        std::string_view const text(place_, static_cast<std::size_t>(end - place_));
        place_ = end + 1;
        return text;
    }

    bool flag() {
        bool const is_true = *place_ == 't';
        place_ += is_true ? 4 : 5;
        return is_true;
    }

    /// Numbers in brackets.
    void numbers(std::vector<unsigned int> &numbers) {
        numbers.clear();
        while (*place_ != ']') {
            // Behind the bracket or the comma.
            ++place_;
            numbers.push_back(number());
        }
        ++place_;
    }

  private:
    char const *place_;
};

unsigned int **blocksOf(std::vector<unsigned int> const &numbers) {
    unsigned int **const list = korvo_core_alloc_uint_array(static_cast<unsigned int>(numbers.size()));
    if (list == nullptr) {
        throw std::bad_alloc();
    }
    for (std::size_t place = 0; place < numbers.size(); ++place) {
        *list[place] = numbers[place];
    }
    return list;
}

std::vector<unsigned int> numbersOf(unsigned int **list) {
    std::vector<unsigned int> numbers;
    for (; list != nullptr && *list != nullptr; ++list) {
        numbers.push_back(**list);
    }
    return numbers;
}

}  // namespace

std::size_t writeRelayCommand(char *text, std::size_t size, unsigned int action_id) {
    return static_cast<std::size_t>(
        std::snprintf(text, size, R"({"command":"Get_relay_action","action_id":%u})", action_id));
}

void readRelay(char const *response, Relay &relay) {
    Reader reader(response);
    reader.expect(R"({"command":"Get_relay_action","status":0,"action_name":)");
    std::string_view const name = reader.text();
    reader.expect(R"(,"relay_target":)");
    relay.setTexts(name, reader.text());
    reader.expect(R"(,"config_mode":)");
    relay.config_mode = reader.number();
    reader.expect(R"(,"config_normally_closed":)");
    relay.config_normally_closed = reader.flag() ? 1 : 0;
    reader.expect(R"(,"config_repeat_cycles":)");
    relay.config_repeat_cycles = reader.number();
    reader.expect(R"(,"config_on_time_ms":)");
    relay.config_on_time_ms = reader.number();
    reader.expect(R"(,"config_off_time_ms":)");
    relay.config_off_time_ms = reader.number();
}

BlockLists::~BlockLists() {
    korvo_core_free_uint_array(ids);
    korvo_core_free_uint_array(types);
}

void BlockLists::check() const {
    Lists{numbersOf(ids), numbersOf(types)}.check();
}

void readLists(char const *response, Lists &lists) {
    Reader reader(response);
    reader.expect(R"({"command":"Get_actions","status":0,"action_id":)");
    reader.numbers(lists.ids);
    reader.expect(R"(,"action_type":)");
    reader.numbers(lists.types);
}

void readLists(char const *response, BlockLists &lists) {
    static Lists numbers;
    readLists(response, numbers);
    lists.ids = blocksOf(numbers.ids);
    lists.types = blocksOf(numbers.types);
}

}  // namespace by_hand
