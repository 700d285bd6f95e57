// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_JSON_LISTS_H
#define KORVO_JSON_LISTS_H

// Lists of the C interface and JSON arrays. A list is a NULL-terminated array of pointers to elements, the array
// and each element a block of malloc(): `char **` for texts, `unsigned int **` for numbers.

#include <cstddef>
#include <cstdlib>

#include "json/json.h"
#include "json/numbers.h"
#include "korvo_core.h"

/// Gives a copy of a JSON text (free it with free()) and status 0; any other status for what is no text, and then
/// nothing is stored. Defined by libkorvo-interfaces.
KORVO_CORE_EXPORT korvo_core_status convertJsonToValue(json::UnknownElement const &element, char **text);

/// Frees every element and the list; NULL is allowed.
template <typename T>
void _korvo_core_free_array(T **list) {
    if (list == nullptr) {
        return;
    }
    for (T **element = list; *element != nullptr; ++element) {
        std::free(*element);
    }
    std::free(list);
}

namespace korvo::lib {

/// Owns one list on behalf of a function that calls freeList() once on every way out. There is no freeing
/// destructor, and freeList() does not reset the pointer: an owner serves one list.
template <typename T>
class cScopedPointerList {
  public:
    T **list = nullptr;

    void freeList() { _korvo_core_free_array(list); }
};

}  // namespace korvo::lib

namespace json::detail {

inline korvo_core_status StoreElement(UnknownElement const &element, char **list, char **slot) {
    try {
        return convertJsonToValue(element, slot);
    } catch (...) {
        _korvo_core_free_array(list);
        throw;
    }
}

inline korvo_core_status StoreElement(UnknownElement const &element, unsigned int **, unsigned int **slot) {
    *slot = static_cast<unsigned int *>(std::malloc(sizeof(unsigned int)));
    if (*slot == nullptr) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
    // On purpose: "Bad cast" leaves from here past the unfinished list, which is then not released.
    **slot = ToUnsigned(element.CastTo<Number>().value());
    return KORVO_CORE_STATUS_NO_ERROR;
}

}  // namespace json::detail

/// Makes a list from an array of texts (T is char) or of numbers (T is unsigned int).
/// @param out  must point to NULL on entry; receives the list, which the caller frees element by element and then
///             as a whole (korvo_core_free_string_array, korvo_core_free_uint_array). Untouched unless 0 is returned.
/// @return 0; 1 when *out is not NULL; 2 when memory runs out; the status of convertJsonToValue() for what is no
///         text.
/// @throws json::Exception "Bad cast" for an element that should be a number and is none.
template <typename T>
KORVO_CORE_EXPORT korvo_core_status convertJsonArrayToList(json::Array const &array, T ***out) {
    if (*out != nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    T **const list = static_cast<T **>(std::calloc(array.size() + 1, sizeof(T *)));
    if (list == nullptr) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
    T **slot = list;
    for (json::UnknownElement const &element : array) {
        korvo_core_status const status = json::detail::StoreElement(element, list, slot++);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            _korvo_core_free_array(list);
            return status;
        }
    }
    *out = list;
    return KORVO_CORE_STATUS_NO_ERROR;
}

namespace json {

/// The JSON array of a caller's list; the list is only read and must not be NULL.
inline Array ToArray(char const *const *list) {
    Array array;
    for (; *list != nullptr; ++list) {
        array.Emplace(String(*list));
    }
    return array;
}

inline Array ToArray(unsigned int const *const *list) {
    Array array;
    for (; *list != nullptr; ++list) {
        array.Emplace(Number(**list));
    }
    return array;
}

}  // namespace json

#endif
