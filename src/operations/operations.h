// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_OPERATIONS_OPERATIONS_H
#define KORVO_OPERATIONS_OPERATIONS_H

// The rows of operations.def as data.

#include "operations/operation.h"

namespace operations {

namespace members {

#define MEMBER(kind, member) {Kind::kind, #member},
#define OPERATION(name, Method, INPUTS, RESULTS)                                     \
    inline constexpr Member name##_inputs[] = {INPUTS(MEMBER){Kind::none, nullptr}}; \
    inline constexpr Member name##_results[] = {RESULTS(MEMBER){Kind::none, nullptr}};
#define VERSION_QUERY OPERATION
#include "operations/operations.def"
#undef MEMBER

}  // namespace members

/// The version handshake.
#define OPERATION(name, Method, INPUTS, RESULTS)
#define VERSION_QUERY(name, Method, INPUTS, RESULTS)                                    \
    inline constexpr Operation version_query = {#name, #Method, members::name##_inputs, \
                                                members::name##_results};
#include "operations/operations.def"

/// The 54 operations.
#define OPERATION(name, Method, INPUTS, RESULTS) \
    {#name, #Method, members::name##_inputs, members::name##_results},
inline constexpr Operation all[] = {
#include "operations/operations.def"
};

/// Places in `all`.
enum Index : unsigned int {
#define OPERATION(name, Method, INPUTS, RESULTS) name,
#include "operations/operations.def"
};

}  // namespace operations

#endif
