// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_VALUES_H
#define KORVO_FRAME_VALUES_H

// Values of operations on their way between C and JSON. The kinds stand in the operation's row; the code that is
// stamped from the rows only lines the values up.

#include "json/json.h"
#include "json/lists.h"
#include "korvo_core.h"
#include "operations/operation.h"

/// One input of a call; the operation's row tells which member holds it.
union Input {
    Input(unsigned int value) : number(value) {}
    Input(unsigned char value) : flag(value) {}
    Input(char const *value) : text(value) {}
    Input(char **value) : texts(value) {}
    Input(unsigned int **value) : numbers(value) {}

    unsigned int number;
    unsigned char flag;
    char const *text;
    char **texts;
    unsigned int **numbers;
};

/// Where one result of a call goes; the operation's row tells which member holds it.
union OutPointer {
    OutPointer(unsigned int *out) : number(out) {}
    OutPointer(unsigned char *out) : flag(out) {}
    OutPointer(char **out) : text(out) {}
    OutPointer(char ***out) : texts(out) {}
    OutPointer(unsigned int ***out) : numbers(out) {}

    unsigned int *number;
    unsigned char *flag;
    char **text;
    char ***texts;
    unsigned int ***numbers;
};

/// One result on its way to a callback. Lists are released with their owners; a text belongs to the callback.
struct Result {
    unsigned int number = 0;
    unsigned char flag = 0;
    char *text = nullptr;
    korvo::lib::cScopedPointerList<char> texts;
    korvo::lib::cScopedPointerList<unsigned int> numbers;

    OutPointer outPointer(operations::Kind kind);
};

/// Adds an input to a command. Returns false, and adds nothing, for a NULL text or list.
bool writeMember(json::Object &command, operations::Member const &member, Input input);

/// Reads a member with the inserting access: what is absent or of another type reads as 0, an empty text, false or
/// an empty list. Returns the status of a failed list conversion, else 0.
/// Throws "Bad cast" for a list element of the wrong type and std::bad_alloc.
korvo_core_status readMember(json::Object &response, operations::Member const &member, OutPointer out);

/// Reads a member with the read-only access, which throws "Object member not found: NAME" or "Bad cast".
korvo_core_status readMember(json::Object const &response, operations::Member const &member, OutPointer out);

#endif
