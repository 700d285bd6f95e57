// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_ALLOCATIONS_H
#define KORVO_BENCH_ALLOCATIONS_H

#include <cstddef>
#include <functional>

/// How often this thread asks for memory while it runs the function, by malloc(), calloc() or realloc(). A program that uses
/// this has these functions in place of the C library's, which they call.
std::size_t allocationsIn(std::function<void()> const &function);

#endif
