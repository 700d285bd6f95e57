// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_LIST_MEMORY_H
#define KORVO_PLATFORM_LIST_MEMORY_H

// NULL-terminated lists. Elements are single blocks from malloc(), since either side of the interface frees
// lists that the other has made.

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace platform {

template <typename T>
void freeList(T **list) {
    if (list == nullptr) {
        return;
    }
    for (T **element = list; *element != nullptr; ++element) {
        std::free(*element);
    }
    std::free(list);
}

/// `count` empty slots and the terminating one; NULL when memory runs out.
template <typename T>
T **allocSlots(unsigned int count) {
    std::size_t const slots = static_cast<std::size_t>(count) + 1;
    // calloc() refuses a product that does not fit. Where a size is no wider than the count, one more may be none.
    return slots > count ? static_cast<T **>(std::calloc(slots, sizeof(T *))) : nullptr;
}

/// As above, each slot holding a zeroed element of its own.
template <typename T>
T **allocList(unsigned int count) {
    T **const list = allocSlots<T>(count);
    if (list == nullptr) {
        return nullptr;
    }
    for (unsigned int index = 0; index < count; ++index) {
        list[index] = static_cast<T *>(std::calloc(1, sizeof(T)));
        if (list[index] == nullptr) {
            freeList(list);
            return nullptr;
        }
    }
    return list;
}

template <typename T>
struct FreeList {
    void operator()(T **list) const { freeList(list); }
};

/// Owns a list that is being filled, from its first slot on.
template <typename T>
using ListOwner = std::unique_ptr<T *, FreeList<T>>;

}  // namespace platform

#endif
