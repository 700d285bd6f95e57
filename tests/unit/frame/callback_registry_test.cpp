// SPDX-License-Identifier: Apache-2.0
#include "frame/callback_registry.h"

#include <gtest/gtest.h>

#include <string>

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
