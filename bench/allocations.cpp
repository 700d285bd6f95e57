// SPDX-License-Identifier: Apache-2.0
#include "allocations.h"

// The C library's own.
extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *__libc_calloc(std::size_t count, std::size_t size);
extern "C" void *__libc_realloc(void *memory, std::size_t size);

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

#pragma GCC diagnostic push
// They are declared by headers that say how the compiler may treat them, which no definition can repeat.
#pragma GCC diagnostic ignored "-Wmissing-declarations"
extern "C" __attribute__((visibility("default"))) void *malloc(std::size_t size) {
    ++allocations;
    return __libc_malloc(size);
}

extern "C" __attribute__((visibility("default"))) void *calloc(std::size_t count, std::size_t size) {
    ++allocations;
    return __libc_calloc(count, size);
}

extern "C" __attribute__((visibility("default"))) void *realloc(void *memory, std::size_t size) {
    ++allocations;
    return __libc_realloc(memory, size);
}
#pragma GCC diagnostic pop

std::size_t allocationsIn(std::function<void()> const &function) {
    std::size_t const before = allocations;
    function();
    return allocations - before;
}
