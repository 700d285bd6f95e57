// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CAPTURES_REBUILDING_H
#define KORVO_SIMULATOR_CAPTURES_REBUILDING_H

#include <string>
#include <vector>

#include "simulator/captures/recording.h"
#include "simulator/catalogue.h"

namespace simulator {

struct Rebuilt {
    Catalogue::Contents contents;
    /// What the capture does not show and so is missing, in words.
    std::vector<std::string> remarks;
};

/// The catalogue as it was at the end of a capture, as far as what was answered with 0 shows it: what was created, changed,
/// deleted, bound and read, and lists, which tell what there is no more. Identifiers stay. Passwords that the capture
/// hides are empty.
Rebuilt catalogueIn(Recording const &recording);

}  // namespace simulator

#endif
