// SPDX-License-Identifier: Apache-2.0
// A catalogue as a picture: graph.

#include <boost/json/value.hpp>

#include "tool/command.h"
#include "tool/graph.h"
#include "tool/output.h"
#include "tool/transfer.h"

namespace tool {
namespace {

void draw(Context &context) {
    std::string const graph = graphOf(chosenCatalogue(context));
    bool const as_picture = context.arguments.flag("--svg");
    std::string const text = as_picture ? pictureOf(graph) : graph;
    if (context.settings.json) {
        output::json({{as_picture ? "svg" : "dot", text}});
    } else {
        output::write(text);
    }
}

}  // namespace

void addGraphCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    commands.push_back(
        {"graph",
         "What there is",
         "draw triggers, filters and actions, in the language of Graphviz",
         "An arrow is a binding; a filter stands between the triggers and its action. Passwords are never "
         "shown.",
         {chosenCatalogueParameter(),
          {"--svg", "the picture itself, drawn by the program dot of Graphviz", false, Takes::flag}},
         draw});
}

}  // namespace tool
