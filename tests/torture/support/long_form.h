// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_LONG_FORM_H
#define KORVO_TESTS_TORTURE_LONG_FORM_H

#include <cstdlib>
#include <string>

namespace torture {

/// Whether KORVO_TORTURE=long asks for every pattern.
inline bool isLong() {
    char const *const wanted = std::getenv("KORVO_TORTURE");
    return wanted != nullptr && std::string(wanted) == "long";
}

}  // namespace torture

#endif
