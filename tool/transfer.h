// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_TRANSFER_H
#define KORVO_TOOL_TRANSFER_H

// A catalogue as a document that does not depend on the service it came from: entries in the order of their names, kinds
// and settings, with identifiers from 1 on in that order. Form: docs/catalogue-format.md.

#include <boost/json/object.hpp>
#include <string>
#include <vector>

#include "tool/catalogue.h"
#include "tool/command.h"

namespace tool {

/// Throws a Failure that names the parameter and says which entry is wrong.
Catalogue catalogueIn(std::string const &parameter, std::string const &text);

/// The parameter FILE of commands that look at a catalogue.
Parameter chosenCatalogueParameter();

/// The document that the parameter FILE names, or what the service has where none is given.
Catalogue chosenCatalogue(Context &context);

/// The same in canonical order with new identifiers.
Catalogue canonical(Catalogue const &catalogue);

/// What an entry is called in messages and where catalogues are compared: its name, with " (2)" and so on where an
/// entry of the kind that stands earlier in canonical order has the same, whatever order these stand in.
std::vector<std::string> keysOf(std::vector<Entry> const &entries);

}  // namespace tool

#endif
