// SPDX-License-Identifier: Apache-2.0
// The list conversions that the library exports to its hosts.
#include "json/lists.h"

template korvo_core_status convertJsonArrayToList<char>(json::Array const &array, char ***out);
template korvo_core_status convertJsonArrayToList<unsigned int>(json::Array const &array,
                                                                unsigned int ***out);
