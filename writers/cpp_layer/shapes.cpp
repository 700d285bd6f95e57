// SPDX-License-Identifier: Apache-2.0
#include "writers/cpp_layer/shapes.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "operations/operations.h"

namespace korvo::writers {
namespace {

using operations::Kind;
using operations::Member;
using operations::Operation;

/// get_email_action: EmailAction
std::string inCamelCase(std::string const &name) {
    std::string text;
    bool is_first = true;
    for (char const letter : name) {
        if (letter == '_') {
            is_first = true;
        } else {
            text += is_first ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
            is_first = false;
        }
    }
    return text;
}

/// What an operation is about: its name without its verb.
std::string nounOf(std::string const &operation) {
    for (std::string const verb : {"__get_", "get_", "set_", "create_", "modify_"}) {
        if (operation.compare(0, verb.size(), verb) == 0) {
            std::string noun = operation.substr(verb.size());
            return noun.substr(0, noun.find_last_not_of('_') + 1);
        }
    }
    return operation;
}

bool isIdentifier(Member const &member) {
    std::string const name = member.name;
    return member.kind == Kind::number && (name == "action_id" || name == "trigger_id");
}

std::string typeOf(Member const &member) {
    std::string const name = member.name;
    switch (member.kind) {
        case Kind::number:
            if (isIdentifier(member)) {
                return inCamelCase(name);
            }
            return name == "action_type" || name == "trigger_type" ? inCamelCase(name) : "unsigned int";
        case Kind::flag:
            return "bool";
        case Kind::text:
            return "std::string";
        case Kind::texts:
            return "std::vector<std::string>";
        default:
            throw std::runtime_error("the list " + name + " belongs to no entry; give it one in shapes.cpp");
    }
}

/// The entry whose lists begin here, or NULL.
Entry const *entryAt(Member const *member) {
    for (Entry const &entry : entries()) {
        std::size_t place = 0;
        while (place < entry.parts.size() && member[place].kind != Kind::none &&
               entry.parts[place].in_c == member[place].name &&
               (member[place].kind == Kind::texts || member[place].kind == Kind::numbers)) {
            ++place;
        }
        if (place == entry.parts.size()) {
            return &entry;
        }
    }
    return nullptr;
}

std::vector<Field> fieldsOf(Member const *member) {
    std::vector<Field> fields;
    while (member->kind != Kind::none) {
        if (Entry const *const entry = entryAt(member)) {
            fields.push_back({entry->list, "std::vector<" + entry->type + ">", member->kind, entry});
            member += entry->parts.size();
        } else {
            fields.push_back({member->name, typeOf(*member), member->kind, nullptr});
            ++member;
        }
    }
    return fields;
}

/// What says enough by its type needs no structure around it.
bool standsAlone(Field const &field) {
    return field.entry != nullptr || field.type == "ActionId" || field.type == "TriggerId" ||
           field.type == "ActionType" || field.type == "TriggerType";
}

Shape shapeOf(Operation const &operation) {
    Shape shape;
    shape.operation = &operation;
    shape.traits = inCamelCase(operation.name) + "Operation";
    std::string const noun = nounOf(operation.name);

    std::vector<Field> inputs = fieldsOf(operation.inputs);
    auto const settings = std::find_if_not(inputs.begin(), inputs.end(), standsAlone);
    shape.parameters.assign(inputs.begin(), settings);
    shape.settings_fields.assign(settings, inputs.end());
    if (!shape.settings_fields.empty()) {
        shape.settings = inCamelCase(noun);
        shape.settings_name = noun;
    }

    shape.results = fieldsOf(operation.results);
    if (shape.results.empty()) {
        shape.value = "void";
    } else if (shape.results.size() == 1 && standsAlone(shape.results.front())) {
        shape.value = shape.results.front().type;
    } else {
        shape.value = inCamelCase(noun);
        shape.is_structure = true;
    }
    return shape;
}

}  // namespace

std::vector<Entry> const &entries() {
    static std::vector<Entry> const all = {
        {"ActionEntry",
         "actions",
         "An action of the catalogue.",
         {{"action_id", "action_id", "ActionId", "its identifier."},
          {"action_type", "action_type", "ActionType", "what it does."}}},
        {"TriggerEntry",
         "triggers",
         "A trigger of the catalogue.",
         {{"trigger_id", "trigger_id", "TriggerId", "its identifier."},
          {"trigger_type", "trigger_type", "TriggerType", "what fires it."}}},
        {"ActionCount",
         "counts",
         "How many actions of one type there are.",
         {{"action_types", "action_type", "ActionType", "the type."},
          {"counts", "count", "unsigned int", "how many there are."}}},
        {"TriggerCount",
         "counts",
         "How many triggers of one type there are.",
         {{"trigger_types", "trigger_type", "TriggerType", "the type."},
          {"counts", "count", "unsigned int", "how many there are."}}},
        {"ActionFilter",
         "filters",
         "When an action may run: on which days, and within which time of them.",
         {{"weekday_filters", "weekdays", "unsigned int", "the sum of values of Weekday."},
          {"time_filters_start", "start", "unsigned int", "where the time window begins."},
          {"time_filters_end", "end", "unsigned int", "where it ends."}}},
        {"Namespace",
         "namespaces",
         "An XML namespace.",
         {{"namespace_keys", "key", "std::string", "the prefix that stands for it."},
          {"namespace_uris", "uri", "std::string", "its URI."}}},
    };
    return all;
}

Shape versionShape() {
    Shape shape = shapeOf(operations::version_query);
    shape.has_timeout = false;
    // The library fills its inputs in.
    shape.settings.clear();
    shape.settings_name.clear();
    shape.settings_fields.clear();
    return shape;
}

std::vector<Shape> allShapes() {
    std::vector<Shape> shapes;
    for (Operation const &operation : operations::all) {
        shapes.push_back(shapeOf(operation));
    }
    return shapes;
}

}  // namespace korvo::writers
