// SPDX-License-Identifier: Apache-2.0
// All about a service on one page: report.

#include <boost/json/value.hpp>
#include <ctime>
#include <iostream>

#include "tool/command.h"
#include "tool/command_line.h"
#include "tool/control.h"
#include "tool/failure.h"
#include "tool/graph.h"
#include "tool/interruption.h"
#include "tool/members.h"
#include "tool/output.h"
#include "tool/report.h"
#include "tool/whole_file.h"

namespace tool {
namespace {

namespace json = boost::json;

std::string now() {
    std::time_t const seconds = std::time(nullptr);
    struct tm parts = {};
    (void)::localtime_r(&seconds, &parts);
    char text[64];
    return std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %Z", &parts) == 0 ? "" : text;
}

void report(Context &context) {
    std::string const file = context.arguments.text("FILE");
    Catalogue const catalogue = readCatalogue(context.client());
    auto const [major, minor] = context.client().serviceVersion();
    auto const control = controlIfThere(context.settings);
    LintResult const mistakes = lint(catalogue, control.get());

    Report page;
    page.subtitle = "As it was at " + now() + "; the service speaks version " + std::to_string(major) + "." +
                    std::to_string(minor);
    page.catalogue = &catalogue;
    page.mistakes = &mistakes;
    try {
        page.picture = pictureOf(graphOf(catalogue));
    } catch (Failure const &failure) {
        interruption::check();
        page.no_picture = std::string("No picture: ") + failure.what() + "; " + failure.advice();
        std::cerr << program << ": " << page.no_picture << "\n";
    }
    if (control != nullptr) {
        page.traces = listIn(control->ask("Get_traces"), "traces");
    } else {
        std::cerr << program << ": no traces: this service keeps none\n";
    }
    writeWhole("FILE", file, pageOf(page));
    if (context.settings.json) {
        json::object told = {{"file", file},
                             {"triggers", catalogue.triggers.size()},
                             {"actions", catalogue.actions.size()},
                             {"mistakes", mistakes.findings.size()},
                             {"picture", !page.picture.empty()}};
        told["traces"] = page.traces ? json::value(page.traces->size()) : json::value(nullptr);
        output::json(told);
    }
}

}  // namespace

void addReportCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    commands.push_back(
        {"report",
         "What there is",
         "write one HTML page with everything: picture, mistakes, weeks, what happened last",
         "The page needs no other file and no network. The picture is drawn by the program dot of Graphviz; "
         "traces are those of korvo-action-engine-simulator. Passwords are never in it.",
         {{"FILE", "where the page goes; it takes the place of what is there", true, Takes::one, "FILE",
           Completion::file}},
         report});
}

}  // namespace tool
