// SPDX-License-Identifier: Apache-2.0
#include "tool/lint.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <deque>
#include <map>
#include <optional>
#include <set>

#include "tool/markup.h"
#include "tool/members.h"
#include "tool/namespaces.h"
#include "tool/output.h"
#include "tool/progress.h"
#include "tool/weekly.h"

namespace tool {
namespace {

namespace json = boost::json;

constexpr unsigned int every_day = 127;
constexpr unsigned int day_seconds = 86'400;

bool isBlank(std::string const &text) {
    return text.find_first_not_of(" \t\r\n") == std::string::npos;
}

bool isNameCharacter(char character) {
    auto const code = static_cast<unsigned char>(character);
    return code >= 0x80U || (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
           (code >= 'a' && code <= 'z') || code == '_' || code == '-' || code == '.';
}

/// The prefixes of names outside quotes.
std::set<std::string> prefixesIn(std::string const &filter) {
    std::set<std::string> prefixes;
    std::string name;
    char quote = '\0';
    for (std::size_t place = 0; place < filter.size(); ++place) {
        char const character = filter[place];
        if (quote != '\0') {
            quote = character == quote ? '\0' : quote;
        } else if (character == '"' || character == '\'') {
            quote = character;
            name.clear();
        } else if (isNameCharacter(character)) {
            name += character;
        } else {
            if (character == ':' && !name.empty() && place + 1 < filter.size() &&
                isNameCharacter(filter[place + 1])) {
                prefixes.insert(name);
            }
            name.clear();
        }
    }
    return prefixes;
}

/// Which actions follow an action, and by which trigger.
struct Follower {
    unsigned int trigger;
    unsigned int action;
};
using Followers = std::map<unsigned int, std::vector<Follower>>;

class Linter {
  public:
    Linter(Catalogue const &catalogue, Control *control)
        : catalogue_(catalogue),
          control_(control),
          progress_("checking", catalogue.actions.size() + catalogue.triggers.size()) {
        for (auto const &[trigger, action] : catalogue.associations) {
            actions_of_[trigger].push_back(action);
            bound_actions_.insert(action);
        }
    }

    LintResult run() {
        if (control_ == nullptr && !(catalogue_.actions.empty() && catalogue_.triggers.empty())) {
            result_.unchecked.emplace_back(
                "what filters mean, and loops: only korvo-action-engine-simulator tells, and none is running "
                "here");
        }
        for (Entry const &action : catalogue_.actions) {
            checkAction(action);
            progress_.step();
        }
        Followers followers;
        for (Entry const &trigger : catalogue_.triggers) {
            bool const is_well = checkTrigger(trigger);
            if (is_well && control_ != nullptr) {
                addFollowers(trigger, followers);
            }
            progress_.step();
        }
        findLoops(followers);
        return std::move(result_);
    }

  private:
    void add(char const *kind, Entry const &entry, std::string member, std::string text) {
        result_.findings.push_back({kind, &entry, std::move(member), std::move(text)});
    }

    bool isKnown(Entry const &entry) {
        if (entry.kind.empty()) {
            result_.unchecked.push_back("the settings of " + titleOf(entry) +
                                        ": it is of a kind that this program does not know");
        }
        return !entry.kind.empty();
    }

    /// Whether the lists are equally long.
    bool checkLengths(Entry const &entry, json::object const &members,
                      std::vector<char const *> const &names) {
        std::string text;
        bool equal = true;
        for (char const *name : names) {
            std::size_t const size = listIn(members, name).size();
            equal = equal && size == listIn(members, names.front()).size();
            text += (text.empty() ? "" : ", ") + std::string(name) + " has " + std::to_string(size);
        }
        if (!equal) {
            add("unequal lists", entry, names.front(), "these lists belong together, and " + text);
        }
        return equal;
    }

    void checkAction(Entry const &action) {
        (void)isKnown(action);
        if (bound_actions_.count(action.id) == 0) {
            add("no trigger", action, "", "no trigger runs it");
        }
        if (!checkLengths(action, action.filters,
                          {"weekday_filters", "time_filters_start", "time_filters_end"})) {
            return;
        }
        auto const windows = windowsIn(action.filters);
        bool all_open = true;
        for (std::size_t place = 0; place < windows.size(); ++place) {
            Window const &window = windows[place];
            char const *why = nullptr;
            if ((window.weekdays & every_day) == 0) {
                why = "it has no weekday";
            } else if (window.start >= day_seconds) {
                why = "it starts behind the end of the day";
            }
            if (why != nullptr) {
                all_open = false;
                add("never opens", action, "filters",
                    "filter " + std::to_string(place + 1) + " of " + std::to_string(windows.size()) + " (" +
                        inWords(window) + ") never lets it run: " + why);
            }
        }
        if (all_open && !windows.empty() && control_ != nullptr) {
            (void)ask(action, "filters", "Check_filters", action.filters);
        }
    }

    /// The control's answer; nothing where it has refused, which is a finding then.
    std::optional<json::object> ask(Entry const &entry, char const *member, char const *command,
                                    json::object members) {
        json::object answer = control_->ask(command, std::move(members));
        if (answer.at("accepted") == json::value(true)) {
            return answer;
        }
        add("bad filter", entry, member, textIn(answer, "words"));
        return {};
    }

    static json::object withNamespaces(Entry const &trigger, json::object members) {
        members["namespace_keys"] = listIn(trigger.settings, "namespace_keys");
        members["namespace_uris"] = listIn(trigger.settings, "namespace_uris");
        return members;
    }

    static json::object topicQuestion(Entry const &trigger) {
        json::object members{{"topic_filter", textIn(trigger.settings, "topic_filter")}};
        if (auto const *const dialect = trigger.settings.if_contains("topic_filter_dialect")) {
            members["topic_filter_dialect"] = *dialect;
        }
        return withNamespaces(trigger, std::move(members));
    }

    static json::object contentQuestion(Entry const &trigger) {
        return withNamespaces(trigger, {{"content_filter", textIn(trigger.settings, "content_filter")}});
    }

    bool checkPrefixes(Entry const &trigger, char const *member) {
        bool all_known = true;
        auto const &keys = listIn(trigger.settings, "namespace_keys");
        for (std::string const &prefix : prefixesIn(textIn(trigger.settings, member))) {
            if (std::find(keys.begin(), keys.end(), json::value(prefix)) == keys.end()) {
                all_known = false;
                add("unknown prefix", trigger, member,
                    "the prefix \"" + printable(prefix) + "\" is not among namespace_keys");
            }
        }
        return all_known;
    }

    /// Whether it is a trigger whose filters can be read.
    bool checkTrigger(Entry const &trigger) {
        if (actions_of_.count(trigger.id) == 0) {
            add("no action", trigger, "", "it runs no action");
        }
        if (!isKnown(trigger)) {
            return false;
        }
        if (trigger.kind == "timer_trigger") {
            if (trigger.settings.at("timer_seconds") == json::value(0)) {
                add("never fires", trigger, "timer_seconds", "a timer of 0 seconds never fires");
            }
            return false;
        }
        if (!checkLengths(trigger, trigger.settings, {"namespace_keys", "namespace_uris"})) {
            return false;
        }
        bool well = true;
        struct Filter {
            char const *member;
            char const *command;
            json::object (*question)(Entry const &);
        };
        for (Filter const &filter : {Filter{"topic_filter", "Check_topic_filter", topicQuestion},
                                     Filter{"content_filter", "Check_content_filter", contentQuestion}}) {
            bool const readable =
                checkPrefixes(trigger, filter.member) &&
                (control_ == nullptr ||
                 ask(trigger, filter.member, filter.command, filter.question(trigger)).has_value());
            well = well && readable;
        }
        return well;
    }

    bool takes(char const *command, json::object question, char const *member, std::string const &text) {
        question[member] = text;
        auto const answer = control_->ask(command, std::move(question));
        auto const *const told = answer.if_contains("takes");
        return told != nullptr && *told == json::value(true);
    }

    /// A completion has the action in its Source. A filter that is blank takes every event but these; and a stable trigger
    /// fires once for each action, since nothing ever ends the state that it has seen.
    void addFollowers(Entry const &trigger, Followers &followers) {
        auto const bound = actions_of_.find(trigger.id);
        if (bound == actions_of_.end() || trigger.kind != "onvif_trigger" ||
            isBlank(textIn(trigger.settings, "topic_filter"))) {
            return;
        }
        auto const &uris = listIn(trigger.settings, "namespace_uris");
        auto const uri = std::find(uris.begin(), uris.end(), json::value(topics_uri));
        if (uri == uris.end()) {
            return;
        }
        std::string const prefix(listIn(trigger.settings, "namespace_keys")
                                     .at(static_cast<std::size_t>(uri - uris.begin()))
                                     .as_string());
        bool const takes_topic = [&] {
            for (char const *topic : {":ActionEngine/Completed", ":ActionEngine/Failed"}) {
                if (takes("Check_topic_filter", topicQuestion(trigger), "topic", prefix + topic)) {
                    return true;
                }
            }
            return false;
        }();
        if (!takes_topic) {
            return;
        }
        bool const takes_all = isBlank(textIn(trigger.settings, "content_filter"));
        for (Entry const &action : catalogue_.actions) {
            // What nothing runs does not complete.
            if (bound_actions_.count(action.id) != 0 &&
                (takes_all ||
                 takes("Check_content_filter", contentQuestion(trigger), "message", completionOf(action)))) {
                for (unsigned int const follower : bound->second) {
                    followers[action.id].push_back({trigger.id, follower});
                }
            }
        }
    }

    static std::string completionOf(Entry const &action) {
        return std::string("<tt:Message xmlns:tt=\"") + schema_uri +
               R"("><tt:Source><tt:SimpleItem Name="ActionId" Value=")" + std::to_string(action.id) +
               R"("/><tt:SimpleItem Name="ActionName" Value=")" + escaped(action.name()) +
               R"("/></tt:Source></tt:Message>)";
    }

    /// The shortest way from an action back to itself, as steps; empty for none.
    static std::vector<Follower> wayBack(Followers const &followers, unsigned int start) {
        std::map<unsigned int, std::pair<unsigned int, Follower>> came_by;
        std::deque<unsigned int> next{start};
        while (!next.empty() && came_by.count(start) == 0) {
            unsigned int const action = next.front();
            next.pop_front();
            auto const found = followers.find(action);
            if (found == followers.end()) {
                continue;
            }
            for (Follower const &step : found->second) {
                if (came_by.emplace(step.action, std::make_pair(action, step)).second) {
                    next.push_back(step.action);
                }
            }
        }
        std::vector<Follower> way;
        if (came_by.count(start) != 0) {
            unsigned int at = start;
            do {
                auto const &[before, step] = came_by.at(at);
                way.insert(way.begin(), step);
                at = before;
            } while (at != start);
        }
        return way;
    }

    /// One loop of each knot: what is part of one already is not told of again.
    void findLoops(Followers const &followers) {
        std::set<unsigned int> told;
        for (auto const &[action, steps] : followers) {
            auto const way = told.count(action) == 0 ? wayBack(followers, action) : std::vector<Follower>();
            if (way.empty()) {
                continue;
            }
            std::string text = titleOf(*catalogue_.action(action));
            for (Follower const &step : way) {
                text += " -> " + titleOf(*catalogue_.trigger(step.trigger)) + " -> " +
                        titleOf(*catalogue_.action(step.action));
                told.insert(step.action);
            }
            add("loop", *catalogue_.action(action), "", "it runs itself by completion events: " + text);
        }
    }

    Catalogue const &catalogue_;
    Control *control_;
    Progress progress_;
    std::map<unsigned int, std::vector<unsigned int>> actions_of_;
    std::set<unsigned int> bound_actions_;
    LintResult result_;
};

}  // namespace

std::string inWords(Finding const &finding) {
    return titleOf(*finding.entry) + ": " + finding.kind + ": " +
           (finding.member.empty() ? "" : finding.member + ": ") + printable(finding.text);
}

LintResult lint(Catalogue const &catalogue, Control *control) {
    return Linter(catalogue, control).run();
}

}  // namespace tool
