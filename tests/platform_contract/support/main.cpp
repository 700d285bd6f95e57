// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "support/runtime_folder.h"

int main(int count, char **arguments) {
    testing::InitGoogleTest(&count, arguments);
    TestRuntimeFolder const folder;
    return RUN_ALL_TESTS();
}
