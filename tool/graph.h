// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_GRAPH_H
#define KORVO_TOOL_GRAPH_H

#include <string>

#include "tool/catalogue.h"

namespace tool {

/// A catalogue in the language of Graphviz: triggers, actions, and the filters that stand between them. No passwords.
std::string graphOf(Catalogue const &catalogue);

/// The picture of a graph, as an element svg, by the program dot. Throws a Failure when that is not installed or fails.
std::string pictureOf(std::string const &graph);

}  // namespace tool

#endif
