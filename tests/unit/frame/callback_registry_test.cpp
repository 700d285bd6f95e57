// SPDX-License-Identifier: Apache-2.0
#include "frame/callback_registry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Callback = void (*)(int);

void first(int) {}
void second(int, int) {}
void third(int) {}

int contexts[3];

/// A registry whose entries are written as a row of letters: M has the callback and context that the tests
/// cancel, c has another callback with that context, x has that callback with another context, f has neither.
/// The keys are a, b, c and so on.
class Registry {
  public:
    explicit Registry(std::string const &row) {
        MutexLock const lock(registry_.mutex());
        // From the last to the first: the order is that of the keys and not that of insertion.
        for (std::size_t place = row.size(); place-- > 0;) {
            Callback const callback = row[place] == 'M' || row[place] == 'x' ? first : third;
            int *const context = row[place] == 'M' || row[place] == 'c' ? &contexts[0] : &contexts[1];
            registry_.insert(key(place).c_str(), callback, context);
        }
        size_ = row.size();
    }

    /// The keys that are left after cancelling what M stands for.
    std::string cancel() {
        MutexLock const lock(registry_.mutex());
        registry_.cancel(first, &contexts[0]);
        std::string left;
        for (std::size_t place = 0; place < size_; ++place) {
            left += registry_.find(key(place).c_str()) != nullptr ? key(place) : "-";
        }
        return left;
    }

  private:
    static std::string key(std::size_t place) { return std::string(1, static_cast<char>('a' + place)); }

    CallbackRegistry<Callback> registry_;
    std::size_t size_ = 0;
};

}  // namespace

TEST(CallbackRegistry, FindsWhatWasInserted) {
    CallbackRegistry<Callback> registry;
    MutexLock const lock(registry.mutex());
    registry.insert("b", first, &contexts[0]);
    registry.insert("a", third, &contexts[1]);
    registry.insert("c", nullptr, nullptr);
    ASSERT_NE(registry.find("a"), nullptr);
    EXPECT_EQ(registry.find("a")->first, reinterpret_cast<AnyCallback>(third));
    EXPECT_EQ(registry.find("a")->second, &contexts[1]);
    ASSERT_NE(registry.find("b"), nullptr);
    EXPECT_EQ(registry.find("b")->first, reinterpret_cast<AnyCallback>(first));
    ASSERT_NE(registry.find("c"), nullptr);
    EXPECT_EQ(registry.find("c")->first, nullptr);
    EXPECT_EQ(registry.find("d"), nullptr);
    EXPECT_EQ(registry.find(""), nullptr);
    EXPECT_EQ(registry.find("aa"), nullptr);
}

TEST(CallbackRegistry, ReplacesTheEntryWithTheSameIdentifier) {
    CallbackRegistry<Callback> registry;
    MutexLock const lock(registry.mutex());
    registry.insert("a", first, &contexts[0]);
    registry.insert("a", third, &contexts[1]);
    EXPECT_EQ(registry.find("a")->first, reinterpret_cast<AnyCallback>(third));
    EXPECT_EQ(registry.find("a")->second, &contexts[1]);
}

TEST(CallbackRegistry, KeepsAnIdentifierOfItsOwn) {
    CallbackRegistry<Callback> registry;
    MutexLock const lock(registry.mutex());
    char identifier[] = "a";
    registry.insert(identifier, first, nullptr);
    identifier[0] = 'b';
    EXPECT_NE(registry.find("a"), nullptr);
    EXPECT_EQ(registry.find("b"), nullptr);
}

TEST(CallbackRegistry, TellsIdentifiersApartToTheirLastCharacter) {
    CallbackRegistry<Callback> registry;
    MutexLock const lock(registry.mutex());
    std::string const uuid = "0b5e55ed-1dea-4b1d-8bad-decaf0c0ffee";
    registry.insert(uuid.c_str(), first, nullptr);
    EXPECT_NE(registry.find(uuid.c_str()), nullptr);
    EXPECT_EQ(registry.find("0b5e55ed-1dea-4b1d-8bad-decaf0c0ffef"), nullptr);
    EXPECT_EQ(registry.find("0b5e55ed-1dea-4b1d-8bad-decaf0c0ffe"), nullptr);
    // Longer than any identifier: not cut to one that is there.
    EXPECT_EQ(registry.find((uuid + "0").c_str()), nullptr);
    EXPECT_THROW(registry.insert((uuid + "0").c_str(), third, nullptr), std::length_error);
    EXPECT_EQ(registry.find(uuid.c_str())->first, reinterpret_cast<AnyCallback>(first));
}

TEST(CallbackRegistry, HasAnEntryInHandWhereItsMutexIsHeld) {
    CallbackRegistry<Callback> registry;
    EXPECT_FALSE(registry.isInHand("a"));
    {
        MutexLock const lock(registry.mutex());
        EXPECT_FALSE(registry.isInHand("a"));
        registry.insert("a", first, nullptr);
        EXPECT_TRUE(registry.isInHand("a"));
        EXPECT_FALSE(registry.isInHand("b"));
        bool elsewhere = true;
        std::thread([&] { elsewhere = registry.isInHand("a"); }).join();
        EXPECT_FALSE(elsewhere);
    }
    EXPECT_FALSE(registry.isInHand("a"));
}

namespace {

struct Pending {
    std::string key;
    AnyCallbackRegistry::Entry entry;
};

/// A lot of entries, in the order in which they come in. `matching` of ten hold what the tests cancel.
std::vector<Pending> makePending(std::size_t count, unsigned int matching) {
    std::mt19937 random(20);
    std::vector<Pending> pending;
    for (std::size_t place = 0; place < count; ++place) {
        std::string key = std::to_string(random()) + std::to_string(random());
        bool const matches = random() % 10 < matching;
        pending.push_back(
            {std::move(key), {reinterpret_cast<AnyCallback>(matches ? first : third), nullptr}});
    }
    return pending;
}

}  // namespace

TEST(AsyncCancel, WalksTheSameWayThroughManyEntries) {
    auto const match = reinterpret_cast<AnyCallback>(first);
    for (unsigned int const matching : {0U, 1U, 5U, 9U, 10U}) {
        std::vector<Pending> const pending = makePending(3000, matching);
        AnyCallbackRegistry registry;
        MutexLock const lock(registry.mutex());
        std::map<std::string, bool> matches;
        for (Pending const &one : pending) {
            registry.insert(one.key.c_str(), one.entry.first, one.entry.second);
            matches[one.key] = one.entry.first == match;
        }
        for (int round = 0; round < 3; ++round) {
            for (auto const &[key, is_match] : matches) {
                auto const *const entry = registry.find(key.c_str());
                ASSERT_NE(entry, nullptr) << key;
                ASSERT_EQ(entry->first == match, is_match) << key;
            }
            registry.cancel(match, nullptr);
            bool follows_match = false;
            for (auto one = matches.begin(); one != matches.end();) {
                bool const goes = follows_match;
                follows_match = one->second;
                if (goes) {
                    EXPECT_EQ(registry.find(one->first.c_str()), nullptr) << one->first;
                }
                one = goes ? matches.erase(one) : std::next(one);
            }
        }
        // What was cancelled can come back, also before and behind all others.
        for (Pending const &one : pending) {
            registry.insert(one.key.c_str(), one.entry.first, one.entry.second);
        }
        for (char const *key : {"!", "~"}) {
            registry.insert(key, match, nullptr);
        }
        for (Pending const &one : pending) {
            ASSERT_NE(registry.find(one.key.c_str()), nullptr) << one.key;
        }
        for (char const *key : {"!", "~"}) {
            ASSERT_NE(registry.find(key), nullptr);
        }
    }
}

TEST(AsyncCancel, KeepsTheMatchAndDropsTheEntryAfterIt) {
    EXPECT_EQ(Registry("Mff").cancel(), "a-c");
    EXPECT_EQ(Registry("Mcx").cancel(), "a-c");
    EXPECT_EQ(Registry("fMf").cancel(), "ab-");
    EXPECT_EQ(Registry("cMx").cancel(), "ab-");
}

TEST(AsyncCancel, DropsNothingAfterTheLastEntry) {
    EXPECT_EQ(Registry("ffM").cancel(), "abc");
    EXPECT_EQ(Registry("M").cancel(), "a");
}

TEST(AsyncCancel, DropsNothingWithoutAMatch) {
    EXPECT_EQ(Registry("").cancel(), "");
    EXPECT_EQ(Registry("fcx").cancel(), "abc");
    EXPECT_EQ(Registry("xxx").cancel(), "abc");
    EXPECT_EQ(Registry("ccc").cancel(), "abc");
}

TEST(AsyncCancel, GoesOnAsLongAsDroppedEntriesMatch) {
    EXPECT_EQ(Registry("MMf").cancel(), "a--");
    EXPECT_EQ(Registry("MMff").cancel(), "a--d");
    EXPECT_EQ(Registry("MMM").cancel(), "a--");
    EXPECT_EQ(Registry("fMMMf").cancel(), "ab---");
    EXPECT_EQ(Registry("MMMMMM").cancel(), "a-----");
}

TEST(AsyncCancel, LooksOnBehindTheLastDroppedEntry) {
    EXPECT_EQ(Registry("MfMf").cancel(), "a-c-");
    EXPECT_EQ(Registry("MfM").cancel(), "a-c");
    EXPECT_EQ(Registry("MfMM").cancel(), "a-c-");
    EXPECT_EQ(Registry("MMfMf").cancel(), "a--d-");
    EXPECT_EQ(Registry("MffMff").cancel(), "a-cd-f");
    EXPECT_EQ(Registry("MxcMfxM").cancel(), "a-cd-fg");
}

TEST(AsyncCancel, TellsCallbacksOfDifferentSignaturesApart) {
    AnyCallbackRegistry registry;
    MutexLock const lock(registry.mutex());
    registry.insert("a", reinterpret_cast<AnyCallback>(second), &contexts[0]);
    registry.insert("b", reinterpret_cast<AnyCallback>(first), &contexts[0]);
    registry.insert("c", reinterpret_cast<AnyCallback>(first), &contexts[0]);
    registry.cancel(reinterpret_cast<AnyCallback>(second), &contexts[0]);
    EXPECT_NE(registry.find("a"), nullptr);
    EXPECT_EQ(registry.find("b"), nullptr);
    EXPECT_NE(registry.find("c"), nullptr);
}
