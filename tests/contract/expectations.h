// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CONTRACT_EXPECTATIONS_H
#define KORVO_TESTS_CONTRACT_EXPECTATIONS_H

// What callers and the service rely on, operation by operation. Written out by hand and apart from the
// library's own tables, so that a wrong row there is noticed here.

#include <string>
#include <vector>

#include "json/json.h"
#include "typed_calls/values.h"

using typed_calls::Kind;
using typed_calls::Numbers;
using typed_calls::Texts;

struct Member {
    Kind kind;
    char const *name;
    typed_calls::Value sample;
};

struct Expectation {
    char const *operation;
    char const *method;
    std::vector<Member> inputs;
    std::vector<Member> results;
    char const *builder;
    char const *reader;
    char const *callback;
};

/// All 54 operations.
std::vector<Expectation> const &expectations();

/// One operation; throws std::out_of_range for a name that is none.
Expectation const &expectation(std::string const &operation);

/// The JSON form of a value that is not NULL.
json::UnknownElement toJson(typed_calls::Value const &content);

/// What the inserting access reads where there is nothing of the right type: 0, false, an empty text or list.
typed_calls::Value emptyOf(Kind kind);

/// What goes with a status that is not 0: 0, false, and NULL for texts and lists.
typed_calls::Value nullOf(Kind kind);

/// The command that an operation sends with its sample inputs.
json::Object commandOf(Expectation const &expected);

/// A good response with the sample results, as the service sends it.
json::Object responseOf(Expectation const &expected);

typed_calls::Values samples(std::vector<Member> const &members);

std::vector<Kind> kinds(std::vector<Member> const &members);

bool isList(Kind kind);

#endif
