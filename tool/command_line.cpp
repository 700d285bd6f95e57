// SPDX-License-Identifier: Apache-2.0
#include "tool/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <map>
#include <utility>

#include "tool/failure.h"
#include "tool/nearest.h"
#include "tool/output.h"

namespace tool {
namespace {

using Takes = Parameter::Takes;
using Options = std::vector<std::pair<Parameter const *, CLI::Option *>>;

std::string footer() {
    std::string codes;
    for (ExitRow const &row : exitRows()) {
        codes += (codes.empty() ? "Exit codes: " : ", ") + std::to_string(static_cast<int>(row.code)) + " " +
                 row.name;
    }
    return codes + ". See also: man " + program;
}

Options addParameters(CLI::App &app, std::vector<Parameter> const &parameters) {
    Options options;
    for (Parameter const &parameter : parameters) {
        CLI::Option *option = nullptr;
        if (parameter.takes == Takes::flag) {
            option = app.add_flag(parameter.name == "--verbose" ? "-v,--verbose" : parameter.name)
                         ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
        } else {
            bool const many = parameter.takes == Takes::many;
            // Of its own kind, since an option without a type is a flag.
            option = app.add_option(parameter.name, [](CLI::results_t const &) { return true; });
            option->type_size(1)->expected(1)->type_name(parameter.isOption() ? parameter.value : "");
            option->allow_extra_args(many && !parameter.isOption());
            option->multi_option_policy(many ? CLI::MultiOptionPolicy::TakeAll
                                             : CLI::MultiOptionPolicy::Throw);
            if (many && !parameter.isOption()) {
                option->expected(parameter.required ? 1 : 0, CLI::detail::expected_max_vector_size);
            }
        }
        option->description(parameter.help)->required(parameter.required);
        options.emplace_back(&parameter, option);
    }
    return options;
}

Arguments given(Options const &options) {
    Arguments arguments;
    for (auto const &[parameter, option] : options) {
        if (option->count() != 0) {
            arguments.add(parameter->name, option->results());
        }
    }
    return arguments;
}

std::pair<unsigned int, unsigned int> versionOf(std::string const &word) {
    auto const point = word.find('.');
    if (point == std::string::npos) {
        throw Failure(Exit::usage, "--require-version is a version, and not \"" + word + "\"",
                      "give something like 1.19");
    }
    return {numberOf("--require-version", word.substr(0, point)),
            numberOf("--require-version", word.substr(point + 1))};
}

Settings settingsOf(Arguments const &common) {
    Settings settings;
    settings.json = common.flag("--json");
    settings.verbose = common.flag("--verbose");
    settings.show_secrets = common.flag("--show-secrets");
    settings.target = common.text("--target");
    if (common.has("--timeout")) {
        settings.timeout_given = true;
        settings.timeout = durationOf("--timeout", common.text("--timeout"));
    }
    if (common.has("--require-version")) {
        settings.required_version = versionOf(common.text("--require-version"));
    }
    return settings;
}

/// The command line as CLI11 has it, made of the rows.
class Parser {
  public:
    Parser() : app_(about, program) {
        app_.footer(footer());
        app_.set_version_flag("--version", std::string(program) + " " KORVO_VERSION);
        app_.require_subcommand(1);
        app_.get_formatter()->column_width(36);
        common_ = addParameters(app_, commonParameters());
        for (Command const &command : commands()) {
            auto const blank = command.name.find(' ');
            CLI::App *parent = &app_;
            if (blank != std::string::npos) {
                parent = groupFor(command.name.substr(0, blank), command.group);
            }
            CLI::App *const made = parent->add_subcommand(
                command.name.substr(blank == std::string::npos ? 0 : blank + 1), command.help);
            made->group(parent == &app_ ? command.group : "Commands")->fallthrough();
            made->footer(command.details.empty() ? "" : command.details);
            options_.emplace(made, std::make_pair(&command, addParameters(*made, command.parameters)));
        }
    }

    std::optional<Chosen> parse(std::vector<std::string> words) {
        std::reverse(words.begin(), words.end());
        try {
            app_.parse(std::move(words));
        } catch (CLI::CallForHelp const &) {
            output::write(app_.help());
            return {};
        } catch (CLI::CallForVersion const &version) {
            output::line(version.what());
            return {};
        } catch (CLI::ParseError const &error) {
            refuse(error);
        }
        auto const &[command, options] = options_.at(innermost());
        Chosen chosen;
        chosen.command = command;
        chosen.arguments = given(options);
        chosen.settings = settingsOf(given(common_));
        return chosen;
    }

  private:
    CLI::App *groupFor(std::string const &name, std::string const &group) {
        auto &made = groups_[name];
        if (made == nullptr) {
            made = app_.add_subcommand(name, "see \"" + name + " --help\"");
            made->group(group)->require_subcommand(1)->fallthrough();
            made->footer("");
        }
        return made;
    }

    CLI::App *innermost() {
        CLI::App *app = &app_;
        while (!app->get_subcommands().empty()) {
            app = app->get_subcommands().back();
        }
        return app;
    }

    [[noreturn]] void refuse(CLI::ParseError const &error) {
        CLI::App *const app = innermost();
        std::string name;
        for (CLI::App const *part = app; part != &app_; part = part->get_parent()) {
            name = part->get_name() + (name.empty() ? "" : " " + name);
        }
        std::string advice = std::string("see: ") + program + (name.empty() ? "" : " " + name) + " --help";
        std::string what = error.what();
        auto const unexpected = app_.remaining(/*recurse*/ true);
        if (!unexpected.empty()) {
            std::string const &word = unexpected.front();
            std::vector<std::string> known;
            bool const is_option = word.front() == '-';
            if (is_option) {
                for (CLI::App *part = app; part != nullptr; part = part->get_parent()) {
                    for (CLI::Option const *option : part->get_options()) {
                        known.push_back(option->get_name());
                    }
                }
            } else {
                for (CLI::App const *sub : app->get_subcommands([](CLI::App *) { return true; })) {
                    known.push_back(sub->get_name());
                }
            }
            what = is_option ? "there is no option " + word + (name.empty() ? "" : " of " + name)
                   : known.empty()
                       ? "\"" + word + "\" is one word too many for " + name
                       : "there is no command \"" + (name.empty() ? "" : name + " ") + word + "\"";
            std::string const meant = nearest(word, known);
            if (!meant.empty()) {
                advice = "did you mean " + meant + "? Else " + advice;
            }
        }
        throw Failure(Exit::usage, what, advice);
    }

    CLI::App app_;
    Options common_;
    std::map<std::string, CLI::App *> groups_;
    std::map<CLI::App const *, std::pair<Command const *, Options>> options_;
};

}  // namespace

std::optional<Chosen> parse(std::vector<std::string> const &words) {
    // What stands behind -- is the beginning of another command line, which is not for the parser.
    if (words.size() > 1 && words[0] == "complete" && words[1] == "--") {
        Chosen chosen;
        for (Command const &command : commands()) {
            chosen.command = command.name == words[0] ? &command : chosen.command;
        }
        chosen.arguments.add("WORD", {words.begin() + 2, words.end()});
        return chosen;
    }
    return Parser().parse(words);
}

}  // namespace tool
