// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FUZZ_INPUT_H
#define KORVO_TESTS_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>

/// Tries one input and aborts when something is wrong with what becomes of it. The name is libFuzzer's.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

#endif
