// SPDX-License-Identifier: Apache-2.0
// Every function of the public header, by name, order, parameters and types.

#include "header/declarations.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "operations/operations.h"

namespace {

using header_text::Declaration;
using operations::Kind;
using operations::Member;
using public_header::declaration;
using public_header::operationNames;

std::string fullName(std::string const &name) {
    return public_header::prefix + name;
}

std::string parametersOf(std::string const &function) {
    return header_text::toString(declaration(fullName(function)).parameters);
}

// How a value of a kind is passed in, and how a callback gets it; a result goes to a pointer to the latter.
// Written out here, apart from the library's own types.
std::string inputType(Kind kind) {
    switch (kind) {
        case Kind::number:
            return "unsigned int ";
        case Kind::flag:
            return "unsigned char ";
        case Kind::text:
            return "char const *";
        case Kind::texts:
            return "char **";
        case Kind::numbers:
            return "unsigned int **";
        case Kind::none:
            break;
    }
    return "no type ";
}

std::string resultType(Kind kind) {
    return kind == Kind::text ? "char *" : inputType(kind);
}

std::string written(Member const *members, std::string (*type)(Kind), std::string const &pointer) {
    std::string result;
    for (; members->kind != Kind::none; ++members) {
        result += ", " + type(members->kind) + pointer + members->name;
    }
    return result;
}

TEST(PublicHeader, IncludesTheCoreHeaderAndNothingElse) {
    EXPECT_EQ(public_header::header().includes, std::vector<std::string>{"\"korvo_core.h\""});
}

TEST(PublicHeader, DeclaresEveryFunctionInOrderAndNoOther) {
    std::vector<std::string> expected = {
        fullName("initiator_init"),
        fullName("initiator_deinit"),
        fullName("get_initiator_version"),
        fullName("free_uuid"),
        fullName("__get_target_version___send"),
        fullName("__get_target_version___non_blocking_send"),
        fullName("__get_target_version___receive"),
        fullName("__get_target_version___send_async"),
        fullName("__get_target_version___cancel_async"),
    };
    for (std::string const &operation : operationNames()) {
        for (char const *form : {"_send", "_send_with_timeout", "_non_blocking_send", "_receive",
                                 "_receive_with_timeout", "_send_async", "_cancel_async"}) {
            expected.push_back(fullName(operation + form));
        }
    }
    for (char const *name :
         {"action_completed_register_event_handler", "action_completed_unregister_event_handler",
          "action_completed_unregister_event_handler_with_context", "register_default_callbacks",
          "unregister_default_callbacks"}) {
        expected.push_back(fullName(name));
    }

    std::vector<std::string> declared;
    for (Declaration const &found : public_header::header().declarations) {
        if (found.what == Declaration::What::function) {
            declared.push_back(found.name);
        }
    }
    EXPECT_EQ(declared, expected);
}

TEST(PublicHeader, ExportsEveryFunctionAndLetsNoneThrow) {
    for (Declaration const &found : public_header::header().declarations) {
        if (found.what == Declaration::What::function) {
            EXPECT_TRUE(found.exported) << found.name;
            EXPECT_TRUE(found.no_throw) << found.name;
        }
    }
}

TEST(PublicHeader, HoldsOnlyFunctionsCallbackTypesAndThreeEnumerations) {
    std::vector<std::string> others;
    for (Declaration const &found : public_header::header().declarations) {
        if (found.what == Declaration::What::other) {
            others.push_back(found.text.substr(0, found.text.find(" KORVO_API_ENUM_BASE {")));
        }
    }
    EXPECT_EQ(others, (std::vector<std::string>{"enum ActionType", "typedef enum ActionType ActionType",
                                                "enum TriggerType", "typedef enum TriggerType TriggerType",
                                                "enum Weekday", "typedef enum Weekday Weekday"}));
}

TEST(PublicHeader, ReturnsAStatusExceptWhereThereIsNone) {
    std::set<std::string> const without_status = {
        fullName("free_uuid"),
        fullName("action_completed_register_event_handler"),
        fullName("action_completed_unregister_event_handler"),
        fullName("action_completed_unregister_event_handler_with_context"),
        fullName("register_default_callbacks"),
        fullName("unregister_default_callbacks"),
    };
    for (Declaration const &found : public_header::header().declarations) {
        if (found.what == Declaration::What::function) {
            EXPECT_EQ(found.result, without_status.count(found.name) != 0 ? "void" : "korvo_core_status")
                << found.name;
        }
    }
}

TEST(PublicHeader, HasTheParametersOfTheLifeOfAHandle) {
    EXPECT_EQ(parametersOf("initiator_init"),
              "void *messaging_handle, void *logging_handle, void **handle, unsigned char subscribe_events, "
              "char const *initiator_name");
    EXPECT_EQ(parametersOf("initiator_deinit"), "void *handle");
    EXPECT_EQ(parametersOf("get_initiator_version"),
              "void *handle, unsigned int *major, unsigned int *minor");
    EXPECT_EQ(parametersOf("free_uuid"), "char *request_id");
    EXPECT_EQ(parametersOf("register_default_callbacks"), "void *handle");
    EXPECT_EQ(parametersOf("unregister_default_callbacks"), "void *handle");
}

TEST(PublicHeader, HasTheParametersOfTheEvent) {
    std::string const handler = "korvo_api_action_engine_action_completed_event_callback_func_ptr";
    EXPECT_EQ(header_text::toString(declaration(handler).parameters),
              "unsigned int action_id, char const *action_name, unsigned char success, char const *source, "
              "void *context");
    EXPECT_EQ(parametersOf("action_completed_register_event_handler"),
              "void *handle, " + handler + " callback, void *context");
    EXPECT_EQ(parametersOf("action_completed_unregister_event_handler"),
              "void *handle, " + handler + " callback");
    EXPECT_EQ(parametersOf("action_completed_unregister_event_handler_with_context"),
              "void *handle, " + handler + " callback, void *context");
}

TEST(PublicHeader, HasTheParametersOfTheVersionQuery) {
    std::string const callback = "korvo_api_action_engine___get_target_version___method_callback_func_ptr";
    EXPECT_EQ(header_text::toString(declaration(callback).parameters),
              "char *target, korvo_core_status status, unsigned int target_major, unsigned int target_minor, "
              "void *context");
    EXPECT_EQ(parametersOf("__get_target_version___send"),
              "void *handle, char const *target, unsigned int *target_major, unsigned int *target_minor");
    EXPECT_EQ(parametersOf("__get_target_version___non_blocking_send"),
              "void *handle, char const *target, char **request_id");
    EXPECT_EQ(parametersOf("__get_target_version___receive"),
              "void *handle, unsigned char block, char const *target, char *request_id, unsigned int "
              "*target_major, "
              "unsigned int *target_minor");
    EXPECT_EQ(parametersOf("__get_target_version___send_async"),
              "void *handle, char const *target, " + callback + " callback, void *context");
    EXPECT_EQ(parametersOf("__get_target_version___cancel_async"),
              "void *handle, " + callback + " callback, void *context");
}

TEST(PublicHeader, HasTheOperationsOfTheTableInTheSameOrder) {
    std::vector<std::string> names;
    for (operations::Operation const &operation : operations::all) {
        names.emplace_back(operation.name);
    }
    EXPECT_EQ(names, operationNames());
}

TEST(PublicHeader, NamesAndTypesTheParametersOfEveryOperationAsTheTableDoes) {
    for (operations::Operation const &operation : operations::all) {
        std::string const name = operation.name;
        std::string const in = written(operation.inputs, inputType, "");
        std::string const out = written(operation.results, resultType, "*");
        std::string const values = written(operation.results, resultType, "");
        std::string const callback = fullName(name + "_method_callback_func_ptr");

        EXPECT_EQ(header_text::toString(declaration(callback).parameters),
                  "char *target, korvo_core_status status" + values + ", void *context")
            << callback;
        EXPECT_EQ(parametersOf(name + "_send"), "void *handle, char const *target" + in + out) << name;
        EXPECT_EQ(parametersOf(name + "_send_with_timeout"),
                  "void *handle, char const *target, int timeout" + in + out)
            << name;
        EXPECT_EQ(parametersOf(name + "_non_blocking_send"),
                  "void *handle, char const *target, char **request_id" + in)
            << name;
        EXPECT_EQ(parametersOf(name + "_receive"),
                  "void *handle, unsigned char block, char const *target, char *request_id" + out)
            << name;
        EXPECT_EQ(parametersOf(name + "_receive_with_timeout"),
                  "void *handle, char const *target, int timeout, char *request_id" + out)
            << name;
        EXPECT_EQ(parametersOf(name + "_send_async"),
                  "void *handle, char const *target" + in + ", " + callback + " callback, void *context")
            << name;
        EXPECT_EQ(parametersOf(name + "_cancel_async"),
                  "void *handle, " + callback + " callback, void *context")
            << name;
    }
}

}  // namespace
