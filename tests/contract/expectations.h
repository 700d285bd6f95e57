// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CONTRACT_EXPECTATIONS_H
#define KORVO_TESTS_CONTRACT_EXPECTATIONS_H

// What callers and the service rely on, operation by operation. Written out by hand and apart from the
// library's own tables, so that a wrong row there is noticed here.

#include <string>
#include <variant>
#include <vector>

#include "json/json.h"

enum class Kind { number, flag, text, texts, numbers };

using Texts = std::vector<std::string>;
using Numbers = std::vector<unsigned int>;

/// A value of an operation; std::monostate stands for a NULL text or list.
using Content = std::variant<std::monostate, unsigned int, unsigned char, std::string, Texts, Numbers>;

struct Member {
    Kind kind;
    char const *name;
    Content sample;
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
json::UnknownElement toJson(Content const &content);

/// What the inserting access reads where there is nothing of the right type: 0, false, an empty text or list.
Content emptyOf(Kind kind);

/// What goes with a status that is not 0: 0, false, and NULL for texts and lists.
Content nullOf(Kind kind);

/// The command that an operation sends with its sample inputs.
json::Object commandOf(Expectation const &expected);

/// A good response with the sample results, as the service sends it.
json::Object responseOf(Expectation const &expected);

std::vector<Content> samples(std::vector<Member> const &members);

bool isList(Kind kind);

#endif
