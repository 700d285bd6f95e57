// SPDX-License-Identifier: Apache-2.0
// Mistakes in a catalogue: lint.

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <iostream>

#include "tool/command.h"
#include "tool/command_line.h"
#include "tool/control.h"
#include "tool/failure.h"
#include "tool/lint.h"
#include "tool/output.h"
#include "tool/transfer.h"

namespace tool {
namespace {

namespace json = boost::json;

json::object documentOf(LintResult const &result) {
    json::array findings;
    for (Finding const &finding : result.findings) {
        findings.push_back(
            json::object({{"kind", finding.kind},
                          {finding.entry->isAction() ? "action_id" : "trigger_id", finding.entry->id},
                          {"name", finding.entry->name()},
                          {"member", finding.member},
                          {"text", finding.text}}));
    }
    json::array unchecked;
    for (std::string const &what : result.unchecked) {
        unchecked.emplace_back(what);
    }
    return {{"findings", std::move(findings)}, {"unchecked", std::move(unchecked)}};
}

void findMistakes(Context &context) {
    Catalogue const catalogue = chosenCatalogue(context);
    auto const control = controlIfThere(context.settings);
    LintResult const result = lint(catalogue, control.get());
    if (context.settings.json) {
        output::json(documentOf(result));
    } else {
        for (std::string const &what : result.unchecked) {
            std::cerr << program << ": not checked: " << what << "\n";
        }
        std::string text;
        for (Finding const &finding : result.findings) {
            text += inWords(finding) + "\n";
        }
        output::write(text);
    }
    if (!result.findings.empty()) {
        throw Failure(Exit::other,
                      result.findings.size() == 1
                          ? "1 mistake was found"
                          : std::to_string(result.findings.size()) + " mistakes were found",
                      "standard output tells them; docs/tool.md says what each kind means");
    }
}

}  // namespace

void addLintCommands(std::vector<Command> &commands) {
    commands.push_back(
        {"lint",
         "What there is",
         "find mistakes: filters, lists, windows, bindings, loops",
         "Ends with exit code 1 where something is found. Filters are read, and loops looked for, by "
         "korvo-action-engine-simulator; without one the rest is checked, and standard error says so.",
         {chosenCatalogueParameter()},
         findMistakes});
}

}  // namespace tool
