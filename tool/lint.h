// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_LINT_H
#define KORVO_TOOL_LINT_H

// Mistakes in a catalogue. What filters mean only the service for development machines can say: its control is asked.

#include <string>
#include <vector>

#include "tool/catalogue.h"
#include "tool/control.h"

namespace tool {

struct Finding {
    /// "bad filter", "unknown prefix", "unequal lists", "never opens", "never fires", "no trigger", "no action", "loop".
    std::string kind;
    Entry const *entry;
    /// The setting that is wrong; empty where it is none.
    std::string member;
    std::string text;
};

/// As one line.
std::string inWords(Finding const &finding);

struct LintResult {
    std::vector<Finding> findings;
    /// What could not be looked at, and why.
    std::vector<std::string> unchecked;
};

/// The result points into the catalogue. Without a control, filters are not read and loops are not looked for.
LintResult lint(Catalogue const &catalogue, Control *control);

}  // namespace tool

#endif
