// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_OPERATIONS_H
#define KORVO_TOOL_OPERATIONS_H

// The operations as the tool sees them: plain data, written by the build, with two functions each that make a call in
// two steps.

#include <cstddef>
#include <string>

#include "korvo_core.h"

namespace tool {

template <typename Row>
struct Rows {
    Row const *first;
    std::size_t count;

    Row const *begin() const { return first; }
    Row const *end() const { return first + count; }
    std::size_t size() const { return count; }
    Row const &operator[](std::size_t place) const { return first[place]; }
};

enum class Kind : unsigned char { number, flag, text, texts, numbers };

struct Member {
    Kind kind;
    char const *name;
    char const *explanation;
};

/// An input or result of any kind; the member's kind says which one it is. The others are unused.
struct Slot {
    unsigned int number = 0;
    unsigned char flag = 0;
    char *text = nullptr;
    char **texts = nullptr;
    unsigned int **numbers = nullptr;
};

struct Operation {
    char const *name;
    char const *method;
    char const *explanation;
    Rows<Member> inputs;
    Rows<Member> results;
    /// The plain functions' two-step forms.
    korvo_core_status (*send)(void *handle, char const *target, char **request_id, Slot const *in);
    korvo_core_status (*receive)(void *handle, char const *target, int timeout, char *request_id, Slot *out);
};

/// In the order of the public header.
Rows<Operation> operations();

/// By the operation's name, its method's or its sub-command's. NULL when there is none.
Operation const *findOperation(std::string const &name);
/// For names that stand in the tool itself.
Operation const &operation(std::string const &name);

/// get_actions: "get-actions".
std::string withHyphens(std::string name);

}  // namespace tool

#endif
