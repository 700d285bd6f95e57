// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_CORE_ERROR_WORDS_H
#define KORVO_CORE_ERROR_WORDS_H

#include <exception>
#include <new>

namespace platform {

/// What people are told of an error.
inline char const *wordsOf(std::exception const &error) noexcept {
    return dynamic_cast<std::bad_alloc const *>(&error) != nullptr ? "out of memory" : error.what();
}

}  // namespace platform

#endif
