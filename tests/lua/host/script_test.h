// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LUA_SCRIPT_TEST_H
#define KORVO_TESTS_LUA_SCRIPT_TEST_H

/// Makes a test of every function in the table that each file of cases/ returns. Files and functions are named as
/// GoogleTest names suites and tests. Every test has a state of its own.
void registerScriptTests();

#endif
