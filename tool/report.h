// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_REPORT_H
#define KORVO_TOOL_REPORT_H

// Everything about a service as one page, which needs nothing else: no script, no other file, no network.

#include <boost/json/array.hpp>
#include <optional>
#include <string>

#include "tool/catalogue.h"
#include "tool/lint.h"

namespace tool {

struct Report {
    /// When it was made, and of what.
    std::string subtitle;
    Catalogue const *catalogue;
    LintResult const *mistakes;
    /// The element svg; empty where there is none, and then why.
    std::string picture;
    std::string no_picture;
    /// As docs/simulator-control.md has them; nothing where the service keeps none.
    std::optional<boost::json::array> traces;
};

/// In HTML. Passwords are never in it.
std::string pageOf(Report const &report);

}  // namespace tool

#endif
