// SPDX-License-Identifier: Apache-2.0
// Writes what korvo.action_engine knows of the operations: write-lua-layer TABLE STUB C_HEADER STUB_HEAD
// How they look in Lua is how they look in C++: named members, and parallel lists as one list of entries.

#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "writers/cpp_layer/shapes.h"
#include "writers/header_texts.h"

namespace korvo::writers {
namespace {

using operations::Kind;
using operations::Member;

constexpr char const *kind_names[] = {"none", "number", "flag", "text", "texts", "numbers"};
constexpr char const *type_names[] = {"nil", "integer", "boolean", "string", "string[]", "integer[]"};

char const *kindName(Kind kind) {
    return kind_names[static_cast<unsigned char>(kind)];
}

/// `end` is a word of Lua.
std::string partName(Part const &part) {
    return part.name == "end" ? "stop" : part.name;
}

Kind partKind(Part const &part) {
    return part.type == "std::string" ? Kind::text : Kind::number;
}

/// `__get_target_version__`: what the C function is called is no name to write.
std::string nameInLua(Shape const &shape) {
    std::string const name = shape.operation->name;
    return name.compare(0, 2, "__") == 0 ? name.substr(2, name.size() - 4) : name;
}

std::vector<Field> inputsOf(Shape const &shape) {
    std::vector<Field> fields = shape.parameters;
    fields.insert(fields.end(), shape.settings_fields.begin(), shape.settings_fields.end());
    return fields;
}

/// Fields go to and come from C in the order in which they stand here.
void compare(std::vector<Field> const &fields, Member const *member, std::string const &operation) {
    auto const next = [&](std::string const &name) {
        if (member->kind == Kind::none || member->name != name) {
            throw std::runtime_error(operation + ": " + name + " is not in the order of its row");
        }
        ++member;
    };
    for (Field const &field : fields) {
        if (field.entry == nullptr) {
            next(field.name);
        } else {
            for (Part const &part : field.entry->parts) {
                next(part.in_c);
            }
        }
    }
    if (member->kind != Kind::none) {
        throw std::runtime_error(operation + ": " + member->name + " is missing");
    }
}

void writeFields(std::ostream &out, std::string const &name, std::vector<Field> const &fields) {
    out << "        " << name << " = {\n";
    for (Field const &field : fields) {
        out << "            {name = \"" << field.name << "\", ";
        if (field.entry == nullptr) {
            out << "kind = \"" << kindName(field.kind) << "\"},\n";
            continue;
        }
        out << "kind = \"entries\", parts = {\n";
        for (Part const &part : field.entry->parts) {
            out << "                {name = \"" << partName(part) << "\", kind = \""
                << kindName(partKind(part)) << "\", wire = \"" << part.in_c << "\"},\n";
        }
        out << "            }},\n";
    }
    out << "        },\n";
}

void writeTable(std::ostream &out, std::vector<Shape> const &shapes) {
    out << "-- SPDX-License-Identifier: Apache-2.0\n"
           "-- The operations and their fields, in the order of the plain functions. Written by the build.\n"
           "return {\n";
    for (Shape const &shape : shapes) {
        std::vector<Field> const inputs = inputsOf(shape);
        if (shape.has_timeout) {
            compare(inputs, shape.operation->inputs, shape.operation->name);
        }
        compare(shape.results, shape.operation->results, shape.operation->name);
        out << "    " << nameInLua(shape) << " = {\n        name = \"" << nameInLua(shape) << "\",\n"
            << "        plain = \"" << shape.operation->name << "\",\n"
            << "        has_timeout = " << (shape.has_timeout ? "true" : "false") << ",\n"
            << "        gives = \""
            << (shape.results.empty() ? "nothing"
                : shape.is_structure  ? "table"
                                      : "value")
            << "\",\n";
        writeFields(out, "inputs", inputs);
        writeFields(out, "results", shape.results);
        out << "    },\n";
    }
    out << "}\n";
}

// ---- The stub ----

std::string replaced(std::string text, std::string const &from, std::string const &to) {
    for (std::size_t place = text.find(from); place != std::string::npos; place = text.find(from, place)) {
        text.replace(place, from.size(), to);
        place += to.size();
    }
    return text;
}

std::string inLua(std::string const &text) {
    return replaced(replaced(replaced(text, "non-zero", "true"), "1 when", "true when"), "NULL", "nil");
}

class StubWriter {
  public:
    StubWriter(std::ostream &out, HeaderTexts const &texts) : out_(out), texts_(texts) {}

    void write(std::vector<Shape> const &shapes) {
        for (Entry const &entry : entries()) {
            out_ << "\n---" << entry.explanation << "\n---@class korvo." << entry.type << "\n";
            for (Part const &part : entry.parts) {
                out_ << "---@field " << partName(part) << " " << typeName(partKind(part)) << " "
                     << part.explanation << "\n";
            }
        }
        for (Shape const &shape : shapes) {
            writeOperation(shape);
        }
    }

  private:
    static std::string typeName(Kind kind) { return type_names[static_cast<unsigned char>(kind)]; }
    static std::string typeName(Field const &field) {
        return field.entry != nullptr ? "korvo." + field.entry->type + "[]" : typeName(field.kind);
    }

    void writeClass(Shape const &shape, std::string const &name, std::vector<Field> const &fields) {
        auto const &names = explanation(shape).names;
        out_ << "\n---@class " << name << "\n";
        for (Field const &field : fields) {
            std::string const member = field.entry != nullptr ? field.entry->parts.front().in_c : field.name;
            auto const found = names.find(member);
            if (found == names.end()) {
                throw std::runtime_error("nothing explains " + member + " of " + shape.operation->name +
                                         "; give it a line in its comment in the header");
            }
            out_ << "---@field " << field.name << " " << typeName(field) << " "
                 << (field.entry != nullptr ? field.entry->explanation : inLua(found->second)) << "\n";
        }
    }

    Explanation const &explanation(Shape const &shape) const {
        return texts_.function("korvo_api_action_engine_" + std::string(shape.operation->name) + "_send");
    }

    void writeOperation(Shape const &shape) {
        std::string const name = nameInLua(shape);
        std::vector<Field> const inputs = inputsOf(shape);
        std::string const arguments = "korvo." + name + ".arguments";
        std::string const results = "korvo." + name + ".results";
        writeClass(shape, arguments, inputs);
        out_ << "---@field timeout? number seconds, in place of the engine's\n";
        if (shape.is_structure) {
            writeClass(shape, results, shape.results);
        }
        std::string const value = shape.results.empty() ? "boolean"
                                  : shape.is_structure  ? results
                                                        : typeName(shape.results.front());
        for (bool const is_asynchronous : {false, true}) {
            out_ << "\n";
            bool is_first = true;
            for (std::string const &line : explanation(shape).lines) {
                std::string const text =
                    is_first ? line.substr(std::string(shape.operation->name).size() + 2) : line;
                is_first = false;
                out_ << "---" << inLua(text) << "\n";
            }
            std::string const single =
                inputs.size() == 1 && inputs.front().entry == nullptr ? " | " + typeName(inputs.front()) : "";
            out_ << "---@param arguments" << (inputs.empty() ? "?" : "") << " " << arguments << single << "\n"
                 << "---@return " << (is_asynchronous ? "korvo.PendingAnswer" : value) << "? "
                 << (is_asynchronous ? "pending its wait() gives what the call without async gives"
                                     : "result")
                 << "\n---@return string? message\n---@return integer? status\n"
                 << "function " << (is_asynchronous ? "Async" : "Engine") << ":" << name
                 << "(arguments) end\n";
        }
    }

    std::ostream &out_;
    HeaderTexts const &texts_;
};

template <typename Write>
void writeFile(std::string const &name, Write const &write) {
    std::ofstream out(name);
    write(out);
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + name);
    }
}

void writeAll(char **words) {
    std::vector<Shape> shapes = {versionShape()};
    for (Shape const &shape : allShapes()) {
        shapes.push_back(shape);
    }
    writeFile(words[1], [&](std::ostream &out) { writeTable(out, shapes); });
    HeaderTexts texts;
    texts.read(words[3]);
    writeFile(words[2], [&](std::ostream &out) {
        out << std::ifstream(words[4]).rdbuf();
        StubWriter(out, texts).write(shapes);
        out << "\nerror(\"the stub of korvo.action_engine is for editors; take its folder out of "
               "LUA_PATH\")\n"
               "return ae\n";
    });
}

}  // namespace
}  // namespace korvo::writers

int main(int count, char **words) {
    try {
        if (count != 5) {
            throw std::runtime_error("usage: write-lua-layer TABLE STUB C_HEADER STUB_HEAD");
        }
        korvo::writers::writeAll(words);
        return 0;
    } catch (std::exception const &problem) {
        std::cerr << "write-lua-layer: " << problem.what() << "\n";
        return 1;
    }
}
