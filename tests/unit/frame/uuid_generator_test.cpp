// SPDX-License-Identifier: Apache-2.0
#include "frame/uuid_generator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string generate(UuidGenerator &generator) {
    char *const text = generator.generate();
    std::string const copy = text;
    std::free(text);
    return copy;
}

bool isVersion4(std::string const &text) {
    std::string const form = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
    if (text.size() != form.size()) {
        return false;
    }
    for (std::size_t place = 0; place < form.size(); ++place) {
        char const *const allowed = form[place] == 'x'   ? "0123456789abcdef"
                                    : form[place] == 'y' ? "89ab"
                                    : form[place] == '4' ? "4"
                                                         : "-";
        if (text[place] == '\0' || std::strchr(allowed, text[place]) == nullptr) {
            return false;
        }
    }
    return true;
}

}  // namespace

TEST(Identifiers, AreVersion4UuidsInLowerCase) {
    UuidGenerator generator;
    for (int round = 0; round < 1000; ++round) {
        std::string const text = generate(generator);
        EXPECT_TRUE(isVersion4(text)) << text;
    }
}

TEST(Identifiers, UseEveryDigitInEveryFreePlace) {
    UuidGenerator generator;
    std::vector<std::set<char>> seen(36);
    for (int round = 0; round < 2000; ++round) {
        std::string const text = generate(generator);
        for (std::size_t place = 0; place < 36; ++place) {
            seen[place].insert(text[place]);
        }
    }
    for (std::size_t place = 0; place < 36; ++place) {
        std::size_t const expected = place == 8 || place == 13 || place == 14 || place == 18 || place == 23
                                         ? 1
                                     : place == 19 ? 4
                                                   : 16;
        EXPECT_EQ(seen[place].size(), expected) << "place " << place;
    }
}

TEST(Identifiers, AreUniqueWhenThreadsShareAGenerator) {
    UuidGenerator generator;
    constexpr std::size_t thread_count = 8;
    constexpr std::size_t each = 10000;
    std::vector<std::vector<std::string>> made(thread_count);
    std::vector<std::thread> threads;
    for (std::vector<std::string> &own : made) {
        threads.emplace_back([&] {
            own.reserve(each);
            for (std::size_t round = 0; round < each; ++round) {
                own.push_back(generate(generator));
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    std::set<std::string> all;
    for (std::vector<std::string> const &own : made) {
        for (std::string const &text : own) {
            ASSERT_TRUE(isVersion4(text)) << text;
            all.insert(text);
        }
    }
    EXPECT_EQ(all.size(), thread_count * each);
}

TEST(Identifiers, DifferBetweenGenerators) {
    std::set<std::string> all;
    for (int round = 0; round < 50; ++round) {
        UuidGenerator generator;
        all.insert(generate(generator));
    }
    EXPECT_EQ(all.size(), 50U);
}
