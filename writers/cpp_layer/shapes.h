// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_WRITERS_CPP_LAYER_SHAPES_H
#define KORVO_WRITERS_CPP_LAYER_SHAPES_H

// How the operations' inputs and results look in C++.

#include <string>
#include <vector>

#include "operations/operation.h"

namespace korvo::writers {

/// One of several parallel lists, as a member of the entry that they become together.
struct Part {
    std::string in_c;
    std::string name;
    std::string type;
    std::string explanation;
};

/// Parallel lists as one list of entries.
struct Entry {
    std::string type;
    std::string list;  // the member, or parameter, that holds the entries
    std::string explanation;
    std::vector<Part> parts;
};

/// The entries that there are.
std::vector<Entry> const &entries();

/// A member of a structure, a parameter or a single result. It stands for one member of the row, or for the lists of an
/// entry.
struct Field {
    std::string name;
    std::string type;
    operations::Kind kind = operations::Kind::none;
    Entry const *entry = nullptr;

    bool operator==(Field const &other) const {
        return name == other.name && type == other.type && kind == other.kind && entry == other.entry;
    }
};

struct Shape {
    operations::Operation const *operation = nullptr;
    bool has_timeout = true;  // in its synchronous form
    std::string traits;       // the structure that calls the plain functions: GetActionsOperation
    std::vector<Field> parameters;
    std::string settings;  // the structure of the remaining inputs, and the parameter's name; may be empty
    std::string settings_name;
    std::vector<Field> settings_fields;
    std::string value;  // the type of the result; "void" when there is none
    bool is_structure = false;
    std::vector<Field> results;
};

Shape versionShape();
std::vector<Shape> allShapes();

}  // namespace korvo::writers

#endif
