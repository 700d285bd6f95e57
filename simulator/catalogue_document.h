// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CATALOGUE_DOCUMENT_H
#define KORVO_SIMULATOR_CATALOGUE_DOCUMENT_H

#include <boost/json/object.hpp>

#include "simulator/catalogue.h"

namespace simulator {

// The whole catalogue as one JSON object.

inline constexpr char const *catalogue_format = "korvo-action-engine-catalogue";
inline constexpr std::uint32_t catalogue_format_version = 1;

boost::json::object documentOf(Catalogue const &catalogue, Telling telling);

/// Reads what documentOf() writes. A secret that is null is what the action of that identifier and kind has in `now`.
/// Throws Refused, and the words say where in the document the fault is.
Catalogue::Contents readDocument(boost::json::object const &document, Catalogue const &now);

}  // namespace simulator

#endif
