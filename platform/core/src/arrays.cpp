// SPDX-License-Identifier: Apache-2.0
// NULL-terminated lists. Elements are single blocks from malloc(), since either side of the interface frees
// lists that the other has made.
#include <cstdlib>
#include <limits>

#include "korvo_core.h"

namespace {

template <typename T>
void free_list(T **list) {
    if (list == nullptr) {
        return;
    }
    for (T **element = list; *element != nullptr; ++element) {
        std::free(*element);
    }
    std::free(list);
}

/// `count` empty slots and the terminating one.
template <typename T>
T **alloc_slots(unsigned int count) {
    if (count >= std::numeric_limits<std::size_t>::max() / sizeof(T *)) {
        return nullptr;
    }
    // calloc() refuses a product that does not fit.
    return static_cast<T **>(std::calloc(static_cast<std::size_t>(count) + 1, sizeof(T *)));
}

/// As above, each slot holding a zeroed element of its own.
template <typename T>
T **alloc_list(unsigned int count) {
    T **const list = alloc_slots<T>(count);
    if (list == nullptr) {
        return nullptr;
    }
    for (unsigned int index = 0; index < count; ++index) {
        list[index] = static_cast<T *>(std::calloc(1, sizeof(T)));
        if (list[index] == nullptr) {
            free_list(list);
            return nullptr;
        }
    }
    return list;
}

}  // namespace

unsigned char **korvo_core_alloc_bool_array(unsigned int count) {
    return alloc_list<unsigned char>(count);
}

unsigned int **korvo_core_alloc_uint_array(unsigned int count) {
    return alloc_list<unsigned int>(count);
}

int **korvo_core_alloc_int_array(unsigned int count) {
    return alloc_list<int>(count);
}

double **korvo_core_alloc_double_array(unsigned int count) {
    return alloc_list<double>(count);
}

char **korvo_core_alloc_string_array(unsigned int count) {
    return alloc_slots<char>(count);
}

void korvo_core_free_bool_array(unsigned char **list) {
    free_list(list);
}

void korvo_core_free_uint_array(unsigned int **list) {
    free_list(list);
}

void korvo_core_free_int_array(int **list) {
    free_list(list);
}

void korvo_core_free_double_array(double **list) {
    free_list(list);
}

void korvo_core_free_string_array(char **list) {
    free_list(list);
}
