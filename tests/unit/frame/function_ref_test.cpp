// SPDX-License-Identifier: Apache-2.0
#include "frame/function_ref.h"

#include <gtest/gtest.h>

namespace {

int twice(FunctionRef<int(int)> function, int argument) {
    return function(function(argument));
}

}  // namespace

TEST(FunctionReference, CallsWhatItRefersTo) {
    int calls = 0;
    auto const add = [&](int value) {
        ++calls;
        return value + 10;
    };
    EXPECT_EQ(twice(add, 1), 21);
    EXPECT_EQ(calls, 2);
}

TEST(FunctionReference, CopiesReferToTheSameCallable) {
    int state = 0;
    auto count = [&](int) { return ++state; };
    FunctionRef<int(int)> const original(count);
    FunctionRef<int(int)> const copy(original);
    EXPECT_EQ(original(0), 1);
    EXPECT_EQ(copy(0), 2);
}
