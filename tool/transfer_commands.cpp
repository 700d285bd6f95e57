// SPDX-License-Identifier: Apache-2.0
// A catalogue from and to files: export, import, diff.

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "tool/catalogue.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/progress.h"
#include "tool/rule.h"
#include "tool/secrets.h"
#include "tool/transfer.h"

namespace tool {
namespace {

namespace json = boost::json;

void exportAll(Context &context) {
    json::object document = documentOf(canonical(readCatalogue(context.client())));
    hideSecrets(context.settings, document);
    output::line(pretty(document));
}

/// Entries by what they are called.
std::map<std::string, Entry const *> byKey(std::vector<Entry> const &entries) {
    auto const keys = keysOf(entries);
    std::map<std::string, Entry const *> found;
    for (std::size_t place = 0; place < entries.size(); ++place) {
        found[keys[place]] = &entries[place];
    }
    return found;
}

/// The password of the option's file, which is read when it is needed first, and once only.
class PasswordFile {
  public:
    explicit PasswordFile(Arguments const &arguments) : arguments_(arguments) {}

    bool isGiven() const { return arguments_.has("--password-file"); }

    std::string const &password() {
        if (password_.empty()) {
            std::string const file = arguments_.text("--password-file");
            password_ = passwordIn("--password-file", file);
            if (password_.empty()) {
                throw Failure(Exit::usage, "--password-file: the first line of \"" + file + "\" is empty",
                              "write the password into its first line");
            }
        }
        return password_;
    }

  private:
    Arguments const &arguments_;
    std::string password_;
};

/// In the place of a password that the document does not have: the present one, or that of the file.
void fillSecrets(PasswordFile &file, std::string const &key, Entry &entry, Entry const *present) {
    for (auto &setting : entry.settings) {
        if (!isSecret(std::string(setting.key())) || !setting.value().is_null()) {
            continue;
        }
        if (present != nullptr && !present->settings.at(setting.key()).is_null()) {
            setting.value() = present->settings.at(setting.key());
        } else if (file.isGiven()) {
            setting.value() = file.password();
        } else {
            throw Failure(Exit::usage,
                          "FILE has no password for " + key + ", and the service has no such action",
                          "give --password-file, or export with --show-secrets");
        }
    }
}

/// What an import does, as lines for people; the work itself when it is not a dry run.
class Import {
  public:
    Import(Context &context, Catalogue wanted, Catalogue const &present)
        : context_(context),
          wanted_(std::move(wanted)),
          present_(present),
          present_actions_(byKey(present_.actions)),
          present_triggers_(byKey(present_.triggers)) {
        PasswordFile file(context_.arguments);
        for (auto *entries : {&wanted_.actions, &wanted_.triggers}) {
            auto const keys = keysOf(*entries);
            for (std::size_t place = 0; place < entries->size(); ++place) {
                Entry &entry = (*entries)[place];
                fillSecrets(file, keys[place], entry, presentOf(entry, keys[place]));
            }
        }
    }

    void run(bool dry_run) {
        dry_run_ = dry_run;
        RuleSteps steps(context_.client());
        steps_ = &steps;
        steps.run([&] {
            std::map<unsigned int, unsigned int> const actions = bring(wanted_.actions);
            std::map<unsigned int, unsigned int> const triggers = bring(wanted_.triggers);
            bindAll(triggers, actions);
            if (context_.arguments.flag("--replace")) {
                removeOthers(present_actions_);
                removeOthers(present_triggers_);
            }
        });
    }

    json::array const &done() const { return done_; }

  private:
    Entry const *presentOf(Entry const &entry, std::string const &key) const {
        auto const &present = entry.isAction() ? present_actions_ : present_triggers_;
        auto const found = present.find(key);
        return found == present.end() ? nullptr : found->second;
    }

    void tell(char const *what, std::string const &key) {
        done_.push_back(json::object({{"done", what}, {"entry", key}}));
    }

    /// Identifiers in the service by those in the document.
    std::map<unsigned int, unsigned int> bring(std::vector<Entry> const &entries) {
        std::map<unsigned int, unsigned int> identifiers;
        auto const keys = keysOf(entries);
        for (std::size_t place = 0; place < entries.size(); ++place) {
            Entry const &entry = entries[place];
            Entry const *const present = presentOf(entry, keys[place]);
            identifiers[entry.id] =
                present == nullptr ? create(entry, keys[place]) : change(entry, *present, keys[place]);
        }
        return identifiers;
    }

    unsigned int create(Entry const &entry, std::string const &key) {
        tell("create", key);
        if (dry_run_) {
            return 0;
        }
        unsigned int const id = steps_->create(entry.kind, entry.settings);
        if (entry.isAction() && !isEmpty(entry.filters)) {
            steps_->setFilters(id, entry.filters, empty(entry.filters));
        }
        return id;
    }

    unsigned int change(Entry const &entry, Entry const &present, std::string const &key) {
        kept_.insert(&present);
        if (entry.settings != present.settings) {
            tell("change", key);
            if (!dry_run_) {
                steps_->modify(present, entry.settings);
            }
        }
        if (entry.isAction() && entry.filters != present.filters) {
            tell("change filters", key);
            if (!dry_run_) {
                steps_->setFilters(present.id, entry.filters, present.filters);
            }
        }
        return present.id;
    }

    void bindAll(std::map<unsigned int, unsigned int> const &triggers,
                 std::map<unsigned int, unsigned int> const &actions) {
        std::set<std::pair<unsigned int, unsigned int>> bound;
        for (auto const &[trigger, action] : wanted_.associations) {
            std::pair<unsigned int, unsigned int> const ids{triggers.at(trigger), actions.at(action)};
            bool const is_new =
                ids.first == 0 || ids.second == 0 ||
                !std::binary_search(present_.associations.begin(), present_.associations.end(), ids);
            bound.insert(ids);
            if (is_new) {
                tell("bind", titles(*wanted_.trigger(trigger), *wanted_.action(action)));
                if (!dry_run_) {
                    steps_->bind(ids.first, ids.second);
                }
            }
        }
        if (!context_.arguments.flag("--replace")) {
            return;
        }
        for (auto const &ids : present_.associations) {
            Entry const *const trigger = present_.trigger(ids.first);
            Entry const *const action = present_.action(ids.second);
            if (bound.count(ids) == 0 && kept_.count(trigger) != 0 && kept_.count(action) != 0) {
                tell("unbind", titles(*trigger, *action));
                if (!dry_run_) {
                    steps_->unbind(ids.first, ids.second);
                }
            }
        }
    }

    void removeOthers(std::map<std::string, Entry const *> const &present) {
        for (auto const &[key, entry] : present) {
            if (kept_.count(entry) == 0) {
                tell("remove", key);
                if (!dry_run_) {
                    steps_->remove(present_, *entry);
                }
            }
        }
    }

    static std::string titles(Entry const &trigger, Entry const &action) {
        return "\"" + trigger.name() + "\" -> \"" + action.name() + "\"";
    }

    static bool isEmpty(json::object const &filters) {
        return std::all_of(filters.begin(), filters.end(),
                           [](auto const &list) { return list.value().as_array().empty(); });
    }

    static json::object empty(json::object filters) {
        for (auto &list : filters) {
            list.value() = json::array();
        }
        return filters;
    }

    Context &context_;
    Catalogue wanted_;
    Catalogue const &present_;
    std::map<std::string, Entry const *> present_actions_;
    std::map<std::string, Entry const *> present_triggers_;
    std::set<Entry const *> kept_;
    RuleSteps *steps_ = nullptr;
    bool dry_run_ = false;
    json::array done_;
};

void importAll(Context &context) {
    if (context.arguments.flag("--merge") == context.arguments.flag("--replace")) {
        throw Failure(Exit::usage, "an import either adds to what there is or replaces it",
                      "give --merge or --replace");
    }
    if (context.arguments.text("FILE") == "-" && context.arguments.text("--password-file") == "-") {
        throw Failure(Exit::usage, "FILE and --password-file cannot both be standard input",
                      "name a file for one of them");
    }
    Catalogue wanted = canonical(catalogueIn("FILE", textOfFile("FILE", context.arguments.text("FILE"))));
    Catalogue const present = readCatalogue(context.client());
    Import work(context, std::move(wanted), present);
    work.run(context.arguments.flag("--dry-run"));
    if (context.settings.json) {
        output::json(work.done());
        return;
    }
    for (auto const &line : work.done()) {
        output::line(inWords(line.as_object().at("done")) + " " + inWords(line.as_object().at("entry")));
    }
}

/// A catalogue's entries and bindings as lines that can be compared, in canonical order.
std::map<std::string, json::object> comparable(Catalogue const &catalogue) {
    std::map<std::string, json::object> all;
    for (auto const *entries : {&catalogue.actions, &catalogue.triggers}) {
        for (auto const &[key, entry] : byKey(*entries)) {
            json::object members = entry->settings;
            for (auto const &list : entry->filters) {
                members[list.key()] = list.value();
            }
            // Two documents of one catalogue, with and without passwords, are the same.
            hideSecrets({}, members);
            all[key] = std::move(members);
        }
    }
    auto const actions = keysOf(catalogue.actions);
    auto const triggers = keysOf(catalogue.triggers);
    for (auto const &[trigger, action] : catalogue.associations) {
        all["binding of " + triggers[trigger - 1] + " to " + actions[action - 1]] = {};
    }
    return all;
}

Catalogue catalogueOf(Context &context, std::string const &parameter) {
    std::string const file = context.arguments.text(parameter);
    return canonical(file == "service" ? readCatalogue(context.client())
                                       : catalogueIn(parameter, textOfFile(parameter, file)));
}

void diff(Context &context) {
    auto const before = comparable(catalogueOf(context, "A"));
    auto const after = comparable(catalogueOf(context, "B"));
    json::array differences;
    std::string text;
    auto const add = [&](char const *sign, std::string const &key, json::object more) {
        std::string line = std::string(sign) + " " + key;
        if (more.contains("member")) {
            line += ": " + inWords(more.at("member")) + " " + json::serialize(more.at("a")) + " -> " +
                    json::serialize(more.at("b"));
        }
        more["entry"] = key;
        more["sign"] = sign;
        differences.push_back(std::move(more));
        text += line + "\n";
    };
    for (auto const &[key, members] : before) {
        auto const other = after.find(key);
        if (other == after.end()) {
            add("-", key, {});
            continue;
        }
        for (auto const &member : members) {
            auto const *const value = other->second.if_contains(member.key());
            if (value != nullptr && *value != member.value()) {
                add("~", key, {{"member", member.key()}, {"a", member.value()}, {"b", *value}});
            }
        }
    }
    for (auto const &[key, members] : after) {
        if (before.count(key) == 0) {
            add("+", key, {});
        }
    }
    if (context.settings.json) {
        output::json(differences);
    } else {
        output::write(text);
    }
}

}  // namespace

void addTransferCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    constexpr char const *group = "Files";
    Parameter const file{"FILE", "a catalogue that export wrote; - is standard input",
                         true,   Takes::one,
                         "FILE", Completion::file};
    commands.push_back({"export",
                        group,
                        "write the whole catalogue as one JSON document in canonical order",
                        "Passwords are null unless --show-secrets is given.",
                        {},
                        exportAll});
    commands.push_back(
        {"import",
         group,
         "bring the service what a document holds; entries are told apart by kind and name",
         "Each step is shown. When one fails all before it are undone. A password that is null is the "
         "present one, or that of --password-file where there is none.",
         {file,
          {"--merge", "keep what the document does not name", false, Takes::flag},
          {"--replace", "remove what the document does not name", false, Takes::flag},
          {"--dry-run", "show what would be done, and do nothing", false, Takes::flag},
          {"--password-file", "file whose first line is the password where document and service have none",
           false, Takes::one, "FILE", Completion::file}},
         importAll});
    commands.push_back(
        {"diff",
         group,
         "compare two catalogues",
         "Lines begin with - for what only A has, + for what only B has, ~ for settings that differ. "
         "Passwords are not compared.",
         {{"A", "a document, or the word service", true, Takes::one, "FILE", Completion::file},
          {"B", "the same", true, Takes::one, "FILE", Completion::file}},
         diff});
}

}  // namespace tool
