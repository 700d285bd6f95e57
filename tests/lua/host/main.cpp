// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "host/script_test.h"

int main(int count, char **arguments) {
    testing::InitGoogleTest(&count, arguments);
    registerScriptTests();
    return RUN_ALL_TESTS();
}
