// SPDX-License-Identifier: Apache-2.0
#include "tool/graph.h"

#include <boost/json/value.hpp>

#include "tool/output.h"
#include "tool/secrets.h"
#include "tool/weekly.h"

namespace tool {
namespace {

/// A label's line. Graphviz reads entities, backslashes and quotes in it.
std::string labelled(std::string const &text) {
    std::string result;
    for (char const character : text) {
        if (character == '&') {
            result += "&amp;";
        } else {
            result += character == '"' || character == '\\' ? "\\" : "";
            result += character;
        }
    }
    return result;
}

std::string label(std::vector<std::string> const &lines) {
    std::string text;
    for (std::string const &line : lines) {
        text += (text.empty() ? "" : "\\n") + labelled(cut(line));
    }
    return "label=\"" + text + "\"";
}

/// What it is about, after its name.
std::vector<std::string> detailsOf(Entry const &entry) {
    std::vector<std::string> details;
    for (auto const &member : entry.settings) {
        std::string const name(member.key());
        if (name == "timer_seconds" || name == "stability_seconds") {
            details.push_back((name == "timer_seconds" ? "every " : "for ") + inWords(member.value()) + " s");
        } else if (name == "topic_filter" || name == "content_filter") {
            if (member.value() != "") {
                details.push_back(inWords(member.value()));
            }
        } else if (entry.isAction() && details.empty() && name != "action_name" && !isSecret(name) &&
                   member.value().is_string() && member.value() != "") {
            details.push_back(inWords(member.value()));
        }
    }
    return details;
}

std::string node(std::string const &name, Entry const &entry, char const *colour) {
    std::vector<std::string> lines = {printable(entry.name()),
                                      kindInWords(entry) + " " + std::to_string(entry.id)};
    for (std::string &detail : detailsOf(entry)) {
        lines.push_back(std::move(detail));
    }
    return "    " + name + " [" + label(lines) + ", fillcolor=\"" + colour + "\"];\n";
}

std::string filterNode(std::string const &name, std::vector<Window> const &windows) {
    constexpr std::size_t most = 6;
    std::vector<std::string> lines;
    for (Window const &window : windows) {
        if (lines.size() == most) {
            lines.push_back("and " + std::to_string(windows.size() - most) + " more");
            break;
        }
        lines.push_back(inWords(window));
    }
    return "    " + name + " [" + label(lines) + ", shape=note, style=filled, fillcolor=\"#fff3cd\"];\n";
}

std::string named(char const *what, unsigned int id) {
    return std::string(what) + "_" + std::to_string(id);
}

}  // namespace

std::string graphOf(Catalogue const &catalogue) {
    std::string text =
        "digraph catalogue {\n"
        "    rankdir=LR;\n"
        "    bgcolor=transparent;\n"
        "    node [shape=box, style=\"rounded,filled\", fontname=\"sans-serif\", fontsize=11];\n";
    for (Entry const &trigger : catalogue.triggers) {
        text += node(named("trigger", trigger.id), trigger, "#dbe9f6");
    }
    for (Entry const &action : catalogue.actions) {
        auto const windows = windowsIn(action.filters);
        text += node(named("action", action.id), action, "#dff0d8");
        if (!windows.empty()) {
            std::string const filter = named("filter", action.id);
            text += filterNode(filter, windows);
            text += "    " + filter + " -> " + named("action", action.id) + ";\n";
        }
    }
    for (auto const &[trigger, action] : catalogue.associations) {
        Entry const *const bound = catalogue.action(action);
        bool const filtered = bound != nullptr && !windowsIn(bound->filters).empty();
        text += "    " + named("trigger", trigger) + " -> " + named(filtered ? "filter" : "action", action) +
                ";\n";
    }
    return text + "}\n";
}

}  // namespace tool
