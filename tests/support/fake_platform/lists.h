// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_LISTS_H
#define KORVO_TESTS_FAKE_PLATFORM_LISTS_H

// Lists as the core makes them, without a recording.

#include <cstdlib>

namespace fake_platform {

template <typename T>
void releaseList(T **list) {
    for (T **element = list; element != nullptr && *element != nullptr; ++element) {
        std::free(*element);
    }
    std::free(list);
}

/// NULL when memory runs out.
template <typename T>
T **makeList(unsigned int count, bool with_elements) {
    T **const list = static_cast<T **>(std::calloc(std::size_t{count} + 1, sizeof(T *)));
    for (unsigned int place = 0; list != nullptr && with_elements && place < count; ++place) {
        list[place] = static_cast<T *>(std::calloc(1, sizeof(T)));
        if (list[place] == nullptr) {
            releaseList(list);
            return nullptr;
        }
    }
    return list;
}

/// Really releases the lists that were only counted, and ends the counting.
void endCountingOfReleases();

}  // namespace fake_platform

#endif
