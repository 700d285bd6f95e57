// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_OPERATIONS_OPERATION_H
#define KORVO_OPERATIONS_OPERATION_H

namespace operations {

/// The kinds of value that operations take and give:
///
///   kind      input            out-pointer       callback parameter   JSON
///   number    unsigned int     unsigned int *    unsigned int         number
///   flag      unsigned char    unsigned char *   unsigned char        boolean
///   text      char const *     char **           char *               string
///   texts     char **          char ***          char **              array of strings
///   numbers   unsigned int **  unsigned int ***  unsigned int **      array of numbers
enum class Kind : unsigned char { none, number, flag, text, texts, numbers };

struct Member {
    Kind kind;
    char const *name;
};

/// One operation; each list of members ends with one of Kind::none.
struct Operation {
    char const *name;
    char const *method;
    Member const *inputs;
    Member const *results;
};

template <Kind>
struct CTypes;

template <>
struct CTypes<Kind::number> {
    using Input = unsigned int;
    using Result = unsigned int;
};

template <>
struct CTypes<Kind::flag> {
    using Input = unsigned char;
    using Result = unsigned char;
};

template <>
struct CTypes<Kind::text> {
    using Input = char const *;
    using Result = char *;
};

template <>
struct CTypes<Kind::texts> {
    using Input = char **;
    using Result = char **;
};

template <>
struct CTypes<Kind::numbers> {
    using Input = unsigned int **;
    using Result = unsigned int **;
};

/// What a caller passes in, what a callback is given, and where a synchronous call puts a result.
template <Kind kind>
using InputOf = typename CTypes<kind>::Input;
template <Kind kind>
using ResultOf = typename CTypes<kind>::Result;
template <Kind kind>
using OutPointerOf = typename CTypes<kind>::Result *;

}  // namespace operations

#endif
