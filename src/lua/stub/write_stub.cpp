// SPDX-License-Identifier: Apache-2.0
// Writes the module as a Lua file for the Lua language server: write-lua-stub STUB HEADER...
// The functions come from the rows, the explanations of operations from the headers' comments, and all others from
// lua_texts.cpp.

#include <cctype>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>

#include "korvo_api_action_engine.h"
#include "lua/pointer_types.h"
#include "lua/stub/function_rows.h"
#include "lua/stub/lua_texts.h"
#include "operations/operations.h"
#include "writers/header_texts.h"

namespace korvo::lua::stub {
namespace {

using writers::Explanation;
using writers::HeaderTexts;

constexpr char const *head = R"lua(---@meta korvo_api_action_engine
-- Declares the Lua module korvo_api_action_engine for the Lua language server. Written by the build; not to be loaded.
--
-- Arguments are the C function's inputs, results what it returns and then what comes back through its pointers. What comes
-- back behind a status is nil, 0 or false when the call has failed. A list is a table from 1 to n. docs/lua.md tells the rest.

---@alias korvo_core_status integer
---@alias korvo_core_log_priority integer
---@alias korvo_core_settings_type integer
)lua";

constexpr char const *globals = R"lua(
---Tells what a value is: the type of a typed pointer as C spells it, "userdata (unknown type)" for other userdata, the name of
---the Lua type for everything else.
---@param value any
---@return string text
function swig_type(value) end

---Tells whether two userdata hold the same C pointer. Gives nothing unless both are userdata.
---@param left any
---@param right any
---@return boolean? same
function swig_equals(left, right) end

)lua";

// Editors take the type of the module from what the file returns, so that stands behind the error.
constexpr char const *tail = R"lua(
error("the stub of korvo_api_action_engine is for editors; take its folder out of LUA_PATH")
return korvo_api_action_engine
)lua";

struct Constant {
    char const *name;
    unsigned int value;
};
constexpr Constant constants[] = {
#define CONSTANT(name) {#name, name},
#include "lua/constants.def"
};

// ---- Types ----

/// What each is in the language of the stub; NULL for typed pointers and what depends on the function.
constexpr char const *type_names[] = {
    nullptr,  // callback
    nullptr,  // returned_nothing
#define INPUT(name, Type, member, expected, lua) lua,
#define POINTER_INPUT(name, Type, expected, type) nullptr,
#define OUTPUT(name, Type, member, lua) lua,
#define POINTER_OUTPUT(name, Type, member, type) nullptr,
#define RESULT(name, Type, member, lua) lua,
#define POINTER_RESULT(name, Type, member, type) nullptr,
#include "lua/passing.def"
};

std::string typeOf(FunctionRow const &function, Parameter const &parameter) {
    // A handle that an operation is called with is used without a test; other texts than these are refused when nil.
    static std::set<std::string> const may_be_nil = {"target", "name", "initiator_name"};
    if (parameter.passing == Passing::callback) {
        return callbackName(*function.operation) + "?";
    }
    if (parameter.passing == Passing::opaque && parameter.name == "handle") {
        return "userdata";
    }
    if (parameter.passing == Passing::text && may_be_nil.count(parameter.name) != 0) {
        return "string?";
    }
    if (char const *const name = type_names[static_cast<unsigned char>(parameter.passing)]) {
        return name;
    }
    // What the header names the type, where it does; else its mangled name.
    PassingTraits const &traits = traitsOf(parameter.passing);
    bool const has_typedef = std::strncmp(traits.expected, "korvo_", 6) == 0;
    return std::string(has_typedef ? traits.expected : pointerType(traits.type).name) + "?";
}

// ---- Texts ----

std::string capitalised(std::string text) {
    if (!text.empty()) {
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    }
    return text;
}

[[noreturn]] void refuse(std::string const &what, std::string const &remedy) {
    throw std::runtime_error("nothing explains " + what + "; " + remedy);
}

class Writer {
  public:
    Writer(std::ostream &out, HeaderTexts const &texts) : out_(out), texts_(texts) {}

    void write() {
        out_ << head;
        writePointerTypes();
        out_ << globals << "---@class korvo_api_action_engine\nkorvo_api_action_engine = {}\n";
        for (Constant const &constant : constants) {
            writeConstant(constant);
        }
        for (FunctionRow const &function : allFunctions()) {
            writeFunction(function);
        }
        out_ << tail;
    }

  private:
    void writeClass(PointerType const &type) {
        std::string const text = type.text;
        out_ << "\n---" << text.substr(0, text.find('|')) << "\n---@class " << type.name << ": userdata\n";
    }

    void writePointerTypes() {
        out_ << "\n-- C pointers in Lua. A script passes them on and compares them; it can neither look "
                "inside nor make one.\n";
#define POINTER_TYPE(name, text) writeClass(pointerType(PointerTypeId::name));
#include "lua/pointer_types.def"
        writeCallback(operations::version_query);
        for (operations::Operation const &operation : operations::all) {
            writeCallback(operation);
        }
        out_ << "---@alias korvo_api_action_engine_action_completed_event_callback_func_ptr "
             << pointerType(PointerTypeId::
                                _p_f_unsigned_int_p_q_const__char_unsigned_char_p_q_const__char_p_void__void)
                    .name
             << "\n";
    }

    void writeCallback(operations::Operation const &operation) {
        PointerType const &type = callbackType(operation);
        if (callback_types_.insert(&type).second) {
            writeClass(type);
        }
        out_ << "---@alias " << callbackName(operation) << " " << type.name << "\n";
    }

    void writeConstant(Constant const &constant) {
        std::string const text = inLua(texts_.constant(constant.name));
        out_ << "\n";
        if (!text.empty()) {
            out_ << "---" << capitalised(text) << "\n";
        }
        out_ << "korvo_api_action_engine." << constant.name << " = " << constant.value << "\n";
    }

    /// Forms of operations have the explanation of the header, and what the form does.
    void writeForm(FunctionRow const &function) {
        Explanation const &explanation = texts_.function(function.name);
        if (explanation.lines.empty()) {
            refuse(function.name, "put a comment in front of its declaration in the header");
        }
        bool is_first = true;
        for (std::string line : explanation.lines) {
            if (is_first) {
                line.erase(0, std::string(function.operation->name).size() + 2);  // "get_actions: "
                line = capitalised(line);
            }
            is_first = false;
            out_ << "---" << inLua(line) << "\n";
        }
        std::string const form = formText(function.form);
        if (form.empty()) {
            refuse("the form " + function.form, "give it a text in lua_texts.cpp");
        }
        out_ << "---\n---This form " << form << "\n";
        std::string const statuses = inLua(explanation.statuses);
        if (!statuses.empty()) {
            out_ << "---\n---Statuses: " << statuses << "\n";
        }
    }

    void writeExplanation(FunctionRow const &function) {
        if (function.operation != nullptr) {
            writeForm(function);
            return;
        }
        LuaText const *const text = luaText(function.name);
        if (text == nullptr) {
            refuse(function.name, "give it a text in lua_texts.cpp");
        }
        for (std::string const &line : text->lines) {
            out_ << "---" << line << "\n";
        }
    }

    /// What is explained of an argument or result, behind the sign that the language server wants before it.
    std::string textOf(FunctionRow const &function, std::string const &name) {
        LuaText const *const own = luaText(function.name);
        if (own != nullptr && own->names.count(name) != 0) {
            return " # " + own->names.at(name);
        }
        if (function.name.compare(0, 11, "korvo_core_") == 0) {
            return "";
        }
        Explanation const &explanation = texts_.function(function.name);
        auto const found = explanation.names.find(name);
        std::string const text = found != explanation.names.end() ? inLua(found->second) : commonText(name);
        if (text.empty()) {
            refuse(name + " of " + function.name,
                   "give it a line in the comment in front of its declaration, or a text in lua_texts.cpp");
        }
        return " # " + text;
    }

    void writeFunction(FunctionRow const &function) {
        out_ << "\n";
        writeExplanation(function);
        std::string names;
        for (Parameter const &input : function.inputs) {
            out_ << "---@param " << input.name << " " << typeOf(function, input)
                 << textOf(function, input.name) << "\n";
            names += (names.empty() ? "" : ", ") + input.name;
        }
        for (Parameter const &result : function.results) {
            out_ << "---@return " << typeOf(function, result) << " " << result.name
                 << textOf(function, result.name) << "\n";
        }
        out_ << "function korvo_api_action_engine." << function.name << "(" << names << ") end\n";
    }

    std::ostream &out_;
    HeaderTexts const &texts_;
    std::set<PointerType const *> callback_types_;
};

void writeStub(std::string const &name, int header_count, char **headers) {
    HeaderTexts texts;
    for (int place = 0; place < header_count; ++place) {
        texts.read(headers[place]);
    }
    std::ofstream out(name);
    Writer(out, texts).write();
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + name);
    }
}

}  // namespace
}  // namespace korvo::lua::stub

int main(int count, char **words) {
    try {
        if (count < 3) {
            throw std::runtime_error("usage: write-lua-stub STUB HEADER...");
        }
        korvo::lua::stub::writeStub(words[1], count - 2, words + 2);
        return 0;
    } catch (std::exception const &problem) {
        std::cerr << "write-lua-stub: " << problem.what() << "\n";
        return 1;
    }
}
