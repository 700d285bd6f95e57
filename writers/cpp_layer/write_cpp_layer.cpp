// SPDX-License-Identifier: Apache-2.0
// Writes the C++ layer: write-cpp-layer HEADER C_HEADER
// The operations come from the rows, their explanations from the comments of the C header.

#include <algorithm>
#include <cctype>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "writers/cpp_layer/shapes.h"
#include "writers/header_texts.h"

namespace korvo::writers {
namespace {

using operations::Kind;
using operations::Member;

constexpr std::size_t width = 110;

constexpr char const *head =
    R"cpp(// SPDX-License-Identifier: Apache-2.0
          // Written by the build from the operations and the comments of korvo_api_action_engine.h; change those.
#ifndef KORVO_ACTION_ENGINE_HPP
#define KORVO_ACTION_ENGINE_HPP

          // The action_engine service in C++17, on the plain functions of korvo_api_action_engine.h: nothing to free, identifiers
          // and settings with types of their own, callables as callbacks. Link libkorvo-api-action-engine and threads.
          //
          //     korvo::ActionEngine engine = korvo::ActionEngine::open().value();
          //     korvo::SnapshotAction picture;
          //     picture.action_name = "door";
          //     picture.filename = "door.jpg";
          //     korvo::ActionId const id = engine.create_snapshot_action(picture).value();
          //
          // Each operation has four forms, the last where the compiler has coroutines:
          //
          //     get_actions()             waits and gives a Result: a value, or a status with a message
          //     get_actions_future()      gives a std::future of the Result at once
          //     get_actions_async(c)      gives a PendingCall at once; the callable c takes the Result
          //     get_actions_awaitable()   is waited for with co_await, which gives the Result
          //
          // Each takes a time-out as its last argument, in place of the engine's. Every call ends once, at its time-out at the
          // latest. Texts are UTF-8. The manual is docs/cpp.md.

#include <future>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "korvo/detail/operation.hpp"
#include "korvo/result.hpp"
#include "korvo_api_action_engine.h"

#if defined(__cpp_impl_coroutine) && __has_include(<coroutine>)
#include "korvo/detail/awaitable.hpp"
#define KORVO_HAS_AWAITABLES 1
#endif

          // NOLINTBEGIN(readability-identifier-naming): operations have the names that the service gives them.

          namespace korvo {
    )cpp";

constexpr char const *engine_head = R"cpp(
    /// A client of the service. Move only. Any number of threads may call it at once; ending it while another thread is
    /// inside a call on it is a mistake of the caller's.
    ///
    /// Callables run on one thread of the engine's own, or where Options::executor runs them; never on a messaging thread,
    /// and with no lock held, so that they may call everything, destroy the engine too. What a callable throws is logged.
    ///
    /// Destroying the engine ends everything: futures and coroutines get a failure, callables are destroyed without a call.
    /// It returns when the callable that is just running has returned, unless it is that callable which destroys the engine.
    ///
    /// _future, _async and _awaitable throw std::bad_alloc or std::system_error when there is no memory or no thread for the
    /// call, and korvo::Error on an engine that was moved away; then nothing has begun. on_action_completed throws the first two.
    /// Everything else is told by the Result.
    class ActionEngine {
      public:
        /// Opens a client. The service need not run yet.
        static Result<ActionEngine> open(Options options = {}) noexcept {
            constexpr char const *operation = "open";
            int milliseconds = 0;
            if (!detail::toMilliseconds(options.timeout, milliseconds)) {
                return Failure{KORVO_CORE_STATUS_INVALID_PARAMS, operation, detail::not_a_timeout};
            }
            if (!detail::isWhole(options.name) || (options.target && !detail::isWhole(*options.target))) {
                return Failure{KORVO_CORE_STATUS_INVALID_PARAMS, operation, detail::zero_byte};
            }
            try {
                ActionEngine engine(std::make_shared<detail::Core>(std::move(options)));
                korvo_core_status const status = engine.core_->open();
                if (status != KORVO_CORE_STATUS_NO_ERROR) {
                    return Failure{status, operation, nullptr};
                }
                return Result<ActionEngine>(std::move(engine));
            } catch (std::exception const &) {
                return Failure{KORVO_CORE_STATUS_ALLOC_FAILED, operation, nullptr};
            }
        }

        ActionEngine(ActionEngine &&other) noexcept = default;
        ActionEngine &operator=(ActionEngine &&other) noexcept {
            if (this != &other) {
                close();
                core_ = std::move(other.core_);
            }
            return *this;
        }
        ~ActionEngine() { close(); }

        /// The interface version of the library itself; nothing is sent. get_target_version() asks the service for its own.
        InitiatorVersion get_initiator_version() const noexcept {
            InitiatorVersion version;
            if (core_ != nullptr) {
                (void)korvo_api_action_engine_get_initiator_version(core_->handle(), &version.initiator_major,
                                                                    &version.initiator_minor);
            }
            return version;
        }

        /// Calls the callable with each event Action_completed, until the subscription ends. What the service did while the
        /// connection was lost reaches nobody: only the log tells of such a gap. Who must know reads the catalogue again.
        ///
        /// With the first one the service is asked something, within the engine's time-out: when this returns, a service that
        /// is there has the subscription.
        ///
        /// At most 4096 events wait for slow callables; those that come then are dropped, and the log says so. How many wait in
        /// an executor is for it to bound.
        template <typename Callable>
        Result<Subscription> on_action_completed(Callable &&callable) const {
            static_assert(std::is_invocable_v<std::decay_t<Callable> &, ActionCompleted const &>,
                          "the callable of a subscription takes a korvo::ActionCompleted const &");
            if (core_ == nullptr) {
                return detail::engineMovedAway("on_action_completed");
            }
            auto const listener = std::make_shared<detail::Listener>(std::forward<Callable>(callable));
            korvo_core_status const status = core_->subscribe(listener);
            if (status != KORVO_CORE_STATUS_NO_ERROR) {
                return Failure{status, "on_action_completed", nullptr};
            }
            return Subscription(core_, listener);
        }
)cpp";

constexpr char const *tail = R"cpp(
    private:
    explicit ActionEngine(std::shared_ptr<detail::Core> core) noexcept : core_(std::move(core)) {}

    void close() noexcept {
        if (core_ != nullptr) {
            core_->close();
            core_.reset();
        }
    }

    std::shared_ptr<detail::Core> core_;
    }
    ;

    }  // namespace korvo

    // NOLINTEND(readability-identifier-naming)

#endif
)cpp";

// ---- Texts ----

std::string capitalised(std::string text) {
    if (!text.empty()) {
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    }
    return text;
}

/// What the comments of the C header say in C's words, in those of the layer.
std::string inCpp(std::string text) {
    static std::pair<char const *, char const *> const words[] = {
        {"1 for a list variable that was not NULL.", ""},
        {"1 for a NULL text or list as an input; nothing is sent.",
         "1 for a text with a zero byte; nothing is sent."},
        {"1 for a NULL text as an input; nothing is sent.",
         "1 for a text with a zero byte; nothing is sent."},
        {"1 for a NULL list as an input; nothing is sent.", ""},
        {"4 also when the log throws while it takes the line; the versions are written then, and the "
         "identifier of a "
         "receive stays with the caller, as after every failure.",
         ""},
        {"It has five forms: there is none with a time-out of the caller's. _send and a blocking _receive "
         "wait up to "
         "5000 ms.",
         "The form that waits does so for up to 5000 ms, whatever the time-out."},
        {"both lists are empty then", "the list is empty then"},
        {"The three lists, their unit and how their entries go together are the service's matter; the "
         "library neither "
         "compares their lengths nor looks at a value.",
         "What the numbers mean is the service's matter; the library looks at none."},
        {"Three empty lists remove them", "An empty list removes them"},
        {"non-zero", "true"},
        {"1 when", "true when"},
    };
    for (auto const &[in_c, in_cpp] : words) {
        std::string const from = in_c;
        std::size_t const place = text.find(from);
        if (place != std::string::npos) {
            text.replace(place, from.size(), in_cpp);
        }
    }
    auto const begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin);
}

/// Paragraphs of a comment, each a line.
std::vector<std::string> paragraphsOf(std::vector<std::string> const &lines) {
    std::vector<std::string> paragraphs(1);
    for (std::string const &line : lines) {
        if (line.empty()) {
            paragraphs.emplace_back();
        } else {
            paragraphs.back() += (paragraphs.back().empty() ? "" : " ") + line;
        }
    }
    return paragraphs;
}

[[noreturn]] void refuse(std::string const &what) {
    throw std::runtime_error("nothing explains " + what +
                             "; give it a line in the comment in front of its declaration in the header");
}

// ---- Code ----

using Words = std::vector<std::string>;

std::string cTypeOf(Kind kind) {
    switch (kind) {
        case Kind::number:
            return "unsigned int ";
        case Kind::flag:
            return "unsigned char ";
        case Kind::text:
            return "char *";
        case Kind::texts:
            return "char **";
        default:
            return "unsigned int **";
    }
}

/// The parameters with which an operation is called in C++.
Words parametersOf(Shape const &shape) {
    Words words;
    for (Field const &field : shape.parameters) {
        words.push_back(field.type + (field.entry != nullptr ? " const &" : " ") + field.name);
    }
    if (!shape.settings.empty()) {
        words.push_back(shape.settings + " const &" + shape.settings_name);
    }
    return words;
}

Words parameterNames(Shape const &shape) {
    Words words;
    for (Field const &field : shape.parameters) {
        words.push_back(field.name);
    }
    if (!shape.settings.empty()) {
        words.push_back(shape.settings_name);
    }
    return words;
}

/// How an input goes into the C call, and what stands before it.
struct Passed {
    Words lines;
    Words arguments;
    Words checks;
};

void pass(Passed &passed, Field const &field, std::string const &expression) {
    if (field.entry != nullptr) {
        for (Part const &part : field.entry->parts) {
            bool const is_text = part.type == "std::string";
            std::string const member = "&" + field.entry->type + "::" + part.name;
            passed.lines.push_back(std::string(is_text ? "TextList " : "NumberList ") + part.in_c + "(" +
                                   expression + ", " + member + ");");
            passed.arguments.push_back(part.in_c + ".pointer()");
            if (is_text) {
                passed.checks.push_back("isWhole(" + expression + ", " + member + ")");
            }
        }
    } else if (field.kind == Kind::texts) {
        passed.lines.push_back("TextList " + field.name + "(" + expression + ");");
        passed.arguments.push_back(field.name + ".pointer()");
        passed.checks.push_back("isWhole(" + expression + ")");
    } else if (field.kind == Kind::text) {
        passed.arguments.push_back(expression + ".c_str()");
        passed.checks.push_back("isWhole(" + expression + ")");
    } else if (field.kind == Kind::flag) {
        passed.arguments.push_back("static_cast<unsigned char>(" + expression + ")");
    } else {
        passed.arguments.push_back(field.type == "unsigned int" ? expression : "number(" + expression + ")");
    }
}

Passed passedOf(Shape const &shape) {
    Passed passed;
    for (Field const &field : shape.parameters) {
        pass(passed, field, field.name);
    }
    for (Field const &field : shape.settings_fields) {
        pass(passed, field, shape.settings_name + "." + field.name);
    }
    return passed;
}

/// Two lists of words as one.
Words operator+(Words left, Words const &right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

class Writer {
  public:
    Writer(std::ostream &out, HeaderTexts const &texts) : out_(out), texts_(texts) {
        shapes_ = {versionShape()};
        for (Shape &shape : allShapes()) {
            shapes_.push_back(std::move(shape));
        }
    }

    void write() {
        out_ << head;
        writeStructures();
        out_ << "\n// The operations on the plain functions.\nnamespace detail {\n";
        for (Shape const &shape : shapes_) {
            writeTraits(shape);
        }
        out_ << "\n}  // namespace detail\n" << engine_head;
        for (Shape const &shape : shapes_) {
            writeMethods(shape);
        }
        out_ << tail;
    }

  private:
    static std::string function(Shape const &shape) {
        return std::string("korvo_api_action_engine_") + shape.operation->name;
    }

    /// One line, or as many as it takes: words with separators between, which go on at `further`.
    void writeList(std::string line, Words const &words, std::string const &separator, std::string const &end,
                   std::size_t further) {
        for (std::size_t place = 0; place < words.size(); ++place) {
            std::string const word = words[place] + (place + 1 < words.size() ? separator : end);
            if (line.size() + word.size() > width) {
                out_ << line.substr(0, line.find_last_not_of(' ') + 1) << "\n";
                line = std::string(further, ' ');
            }
            line += word + (place + 1 < words.size() ? " " : "");
        }
        out_ << line << (words.empty() ? end : "") << "\n";
    }

    void writeComment(std::string const &text, std::size_t indent) {
        std::string const begin = std::string(indent, ' ') + "///";
        Words words;
        for (std::size_t place = 0; place < text.size();) {
            std::size_t const end = std::min(text.find(' ', place), text.size());
            words.push_back(text.substr(place, end - place));
            place = end + 1;
        }
        std::string line = begin;
        for (std::string const &word : words) {
            if (line.size() + 1 + word.size() > width) {
                out_ << line << "\n";
                line = begin;
            }
            line += " " + word;
        }
        out_ << line << "\n";
    }

    // ---- Structures ----

    std::string explanationOf(Shape const &shape, std::string const &name) {
        auto const &names = texts_.function(function(shape) + "_send").names;
        auto const found = names.find(name);
        if (found == names.end()) {
            refuse(name + " of " + function(shape) + "_send");
        }
        return capitalised(inCpp(found->second));
    }

    void writeMember(std::string const &type, std::string const &name, std::string const &explanation) {
        writeComment(capitalised(explanation), 4);
        out_ << "    " << type << " " << name << " = "
             << (type == "unsigned int" ? "0"
                 : type == "bool"       ? "false"
                                        : "{}")
             << ";\n";
    }

    void writeStructure(Shape const &shape, std::string const &name, std::vector<Field> const &fields) {
        auto const found = structures_.find(name);
        if (found != structures_.end()) {
            if (!(found->second == fields)) {
                throw std::runtime_error(std::string("the members of ") + shape.operation->name +
                                         " are not those of " + name + ", which another operation has");
            }
            return;
        }
        structures_.emplace(name, fields);
        out_ << "\n";
        writeComment(structureText(shape), 0);
        out_ << "struct " << name << " {\n";
        for (Field const &field : fields) {
            writeMember(field.type, field.name,
                        field.entry != nullptr ? explanationOfEntries(shape, field)
                                               : explanationOf(shape, field.name));
        }
        out_ << "};\n";
    }

    std::string explanationOfEntries(Shape const &shape, Field const &field) {
        // What the first of the lists holds is what the entries are about.
        return field.entry->type == "Namespace" ? explanationOf(shape, field.entry->parts.front().in_c)
                                                : "A list: " + field.entry->explanation;
    }

    static std::string structureText(Shape const &shape) {
        std::string const name = shape.operation->name;
        return shape.is_structure ? "What " + name + "() gives." : "What " + name + "() takes.";
    }

    void writeStructures() {
        bool is_first = true;
        for (Entry const &entry : entries()) {
            out_ << (is_first ? "" : "\n");
            is_first = false;
            writeComment(entry.explanation, 0);
            out_ << "struct " << entry.type << " {\n";
            for (Part const &part : entry.parts) {
                writeMember(part.type, part.name, part.explanation);
            }
            out_ << "};\n";
        }
        // Settings first, since what is made is explained best where it is made.
        for (Shape const &shape : shapes_) {
            if (!shape.settings.empty() && shape.parameters.empty()) {
                writeStructure(shape, shape.settings, shape.settings_fields);
            }
        }
        for (Shape const &shape : shapes_) {
            if (!shape.settings.empty()) {
                writeStructure(shape, shape.settings, shape.settings_fields);
            }
            if (shape.is_structure) {
                writeStructure(shape, shape.value, shape.results);
            }
        }
    }

    // ---- Calls of plain functions ----

    void writeMake(Shape const &shape) {
        if (shape.results.empty()) {
            return;
        }
        Words parameters;
        for (Member const *member = shape.operation->results; member->kind != Kind::none; ++member) {
            static std::map<Kind, std::string> const types = {{Kind::number, "unsigned int "},
                                                              {Kind::flag, "unsigned char "},
                                                              {Kind::text, "char const *"},
                                                              {Kind::texts, "char *const *"},
                                                              {Kind::numbers, "unsigned int *const *"}};
            parameters.push_back(types.at(member->kind) + member->name);
        }
        writeList("    static Value make(", parameters, ",", ") {", 22);
        if (!shape.is_structure) {
            out_ << "        return " << made(shape.results.front()) << ";\n    }\n";
            return;
        }
        out_ << "        Value value;\n";
        for (Field const &field : shape.results) {
            out_ << "        value." << field.name << " = " << made(field) << ";\n";
        }
        out_ << "        return value;\n    }\n";
    }

    /// A result out of what C gives.
    static std::string made(Field const &field) {
        if (field.entry != nullptr) {
            std::string parameters;
            std::string values;
            std::string lists;
            for (Part const &part : field.entry->parts) {
                bool const is_text = part.type == "std::string";
                bool const is_first = parameters.empty();
                // Not the lists' names, which would be hidden.
                parameters += (is_first ? "" : ", ") +
                              std::string(is_text ? "char const *" : "unsigned int ") + "one_" + part.name;
                values += (is_first ? "" : ", ") + (is_text ? "text(one_" + part.name + ")"
                                                    : part.type == "unsigned int"
                                                        ? "one_" + part.name
                                                        : part.type + "(one_" + part.name + ")");
                lists += ", " + part.in_c;
            }
            return "entries(\n            [](" + parameters + ") {\n                return " +
                   field.entry->type + "{" + values + "};\n            }" + lists + ")";
        }
        switch (field.kind) {
            case Kind::flag:
                return field.name + " != 0";
            case Kind::text:
                return "text(" + field.name + ")";
            case Kind::texts:
                return "texts(" + field.name + ")";
            default:
                return field.type == "unsigned int" ? field.name : field.type + "(" + field.name + ")";
        }
    }

    void writeSend(Shape const &shape, Passed const &passed) {
        Words const first = {"void *handle", "char const *target",
                             shape.has_timeout ? "int timeout" : "int /*timeout*/"};
        writeList("    static Result<Value> send(", first + parametersOf(shape), ",", ") {", 30);
        for (std::string const &line : passed.lines) {
            out_ << "        " << line << "\n";
        }
        Words outs;
        Words results = {"status"};
        for (Member const *member = shape.operation->results; member->kind != Kind::none; ++member) {
            std::string const name = member->name;
            static std::map<Kind, std::string> const owners = {
                {Kind::text, "OwnedText"}, {Kind::texts, "OwnedTexts"}, {Kind::numbers, "OwnedNumbers"}};
            auto const owner = owners.find(member->kind);
            if (owner != owners.end()) {
                out_ << "        " << owner->second << " " << name << ";\n";
                outs.push_back("&" + name + ".pointer");
                results.push_back(name + ".pointer");
            } else {
                out_ << "        " << cTypeOf(member->kind) << name << " = 0;\n";
                outs.push_back("&" + name);
                results.push_back(name);
            }
        }
        Words const begin = {"handle", "target"};
        out_ << "        korvo_core_status const status =\n";
        writeList("            " + function(shape) + (shape.has_timeout ? "_send_with_timeout(" : "_send("),
                  begin + (shape.has_timeout ? Words{"timeout"} : Words{}) + passed.arguments + outs, ",",
                  ");", 16);
        writeList("        return resultOf<" + shape.traits + ">(", results, ",", ");", 12);
        out_ << "    }\n";
    }

    void writeSendAsync(Shape const &shape, Passed const &passed) {
        Words const first = {"void *handle", "char const *target", "void *context"};
        Words const begin = {"handle", "target"};
        Words const end = {"answered", "context"};
        writeList("    static korvo_core_status sendAsync(", first + parametersOf(shape), ",", ") {", 39);
        for (std::string const &line : passed.lines) {
            out_ << "        " << line << "\n";
        }
        writeList("        return " + function(shape) + "_send_async(", begin + passed.arguments + end, ",",
                  ");", 12);
        out_ << "    }\n";

        Words parameters = {"char * /*target*/", "korvo_core_status status"};
        Words results = {"context", "status"};
        Words owned;
        for (Member const *member = shape.operation->results; member->kind != Kind::none; ++member) {
            std::string const name = member->name;
            parameters.push_back(cTypeOf(member->kind) + name);
            results.push_back(name);
            if (member->kind == Kind::text) {
                owned.push_back("OwnedText const owned_" + name + "(" + name + ");");
            }
        }
        parameters.push_back("void *context");
        writeList("    static void answered(", parameters, ",", ") {", 25);
        for (std::string const &line : owned) {
            out_ << "        " << line << "\n";
        }
        writeList("        answer<" + shape.traits + ">(", results, ",", ");", 12);
        out_ << "    }\n";
    }

    /// Those that nothing is checked of have no names.
    static Words checkedParameters(Shape const &shape, Passed const &passed) {
        Words words = parametersOf(shape);
        Words const names = parameterNames(shape);
        for (std::size_t place = 0; place < words.size(); ++place) {
            bool is_checked = false;
            for (std::string const &check : passed.checks) {
                is_checked = is_checked || check.find(names[place]) != std::string::npos;
            }
            if (!is_checked) {
                words[place].erase(words[place].size() - names[place].size());
                words[place].erase(words[place].find_last_not_of(' ') + 1);
            }
        }
        return words;
    }

    void writeTraits(Shape const &shape) {
        Passed const passed = passedOf(shape);
        out_ << "\nstruct " << shape.traits << " {\n    using Value = " << shape.value
             << ";\n    static constexpr char const *name = \"" << shape.operation->name << "\";\n\n";
        writeList("    static bool isSendable(", checkedParameters(shape, passed), ",", ") noexcept {", 27);
        if (passed.checks.empty()) {
            out_ << "        return true;\n";
        } else {
            writeList("        return ", passed.checks, " &&", ";", 15);
        }
        out_ << "    }\n";
        writeMake(shape);
        writeSend(shape, passed);
        writeSendAsync(shape, passed);
        out_ << "};\n";
    }

    // ---- The class ----

    std::string nameInCpp(Shape const &shape) {
        std::string const name = shape.operation->name;
        return name.compare(0, 2, "__") == 0 ? name.substr(2, name.size() - 4) : name;
    }

    void writeExplanation(Shape const &shape) {
        Explanation const &explanation = texts_.function(function(shape) + "_send");
        if (explanation.lines.empty()) {
            refuse(function(shape) + "_send");
        }
        bool is_first = true;
        for (std::string paragraph : paragraphsOf(explanation.lines)) {
            if (is_first) {
                paragraph = capitalised(paragraph.substr(std::string(shape.operation->name).size() + 2));
            } else {
                out_ << "    ///\n";
            }
            is_first = false;
            writeComment(inCpp(paragraph), 4);
        }
        for (Field const &field : shape.parameters) {
            if (field.entry == nullptr) {
                out_ << "    ///\n";
                writeComment(field.name + ": " + inCpp(explanation.names.at(field.name)), 4);
            }
        }
        std::string const statuses = inCpp(explanation.statuses);
        if (!statuses.empty()) {
            out_ << "    ///\n";
            writeComment("Statuses: " + statuses, 4);
        }
    }

    void writeMethod(Shape const &shape, std::string const &begin, std::string const &call,
                     Words const &more) {
        Words parameters = parametersOf(shape);
        Words const timeout = {"Timeout const &timeout = std::nullopt"};
        bool const is_waiting = call == "call";
        writeList("    " + begin, parameters + more + timeout, ",",
                  is_waiting ? ") const noexcept {" : ") const {", 8);
        Words arguments = {is_waiting ? "core_.get()" : "core_", "timeout"};
        arguments = arguments + (more.empty() ? Words{} : Words{"std::forward<Callable>(callable)"});
        writeList("        return detail::" + call + "<detail::" + shape.traits + ">(",
                  arguments + parameterNames(shape), ",", ");", 12);
        out_ << "    }\n";
    }

    void writeMethods(Shape const &shape) {
        std::string const name = nameInCpp(shape);
        std::string const result = "Result<" + shape.value + ">";
        out_ << "\n";
        writeExplanation(shape);
        writeMethod(shape, result + " " + name + "(", "call", {});
        writeMethod(shape, "std::future<" + result + "> " + name + "_future(", "callFuture", {});
        out_ << "    template <typename Callable>\n";
        writeMethod(shape, "PendingCall " + name + "_async(", "callAsync", {"Callable &&callable"});
        std::string types;
        for (Field const &field : shape.parameters) {
            types += ", " + field.type;
        }
        types += shape.settings.empty() ? "" : ", " + shape.settings;
        Words const timeout = {"Timeout const &timeout = std::nullopt"};
        Words const arguments = {"core_", "timeout"};
        std::string const awaitable = "detail::Awaitable<detail::" + shape.traits + types + ">";
        out_ << "#if defined(KORVO_HAS_AWAITABLES)\n";
        writeList("    auto " + name + "_awaitable(", parametersOf(shape) + timeout, ",", ") const {", 8);
        writeList("        return " + awaitable + "(", arguments + parameterNames(shape), ",", ");", 12);
        out_ << "    }\n#endif\n";
    }

    std::ostream &out_;
    HeaderTexts const &texts_;
    std::vector<Shape> shapes_;
    std::map<std::string, std::vector<Field>> structures_;
};

void writeLayer(std::string const &name, std::string const &header) {
    HeaderTexts texts;
    texts.read(header);
    std::ofstream out(name);
    Writer(out, texts).write();
    out.close();
    if (!out) {
        throw std::runtime_error("cannot write " + name);
    }
}

}  // namespace
}  // namespace korvo::writers

int main(int count, char **words) {
    try {
        if (count != 3) {
            throw std::runtime_error("usage: write-cpp-layer HEADER C_HEADER");
        }
        korvo::writers::writeLayer(words[1], words[2]);
        return 0;
    } catch (std::exception const &problem) {
        std::cerr << "write-cpp-layer: " << problem.what() << "\n";
        return 1;
    }
}
