// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "host/script_test.h"

/// Read by the address sanitizer where it is built in: tests load the library a second time under another name, and its
/// data standing there twice is no mistake.
extern "C" __attribute__((visibility("default"))) char const *__asan_default_options();
char const *__asan_default_options() {
    return "detect_odr_violation=0";
}

int main(int count, char **arguments) {
    testing::InitGoogleTest(&count, arguments);
    registerScriptTests();
    return RUN_ALL_TESTS();
}
