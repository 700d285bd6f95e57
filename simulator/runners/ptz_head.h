// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_PTZ_HEAD_H
#define KORVO_SIMULATOR_RUNNERS_PTZ_HEAD_H

#include <string>
#include <string_view>

namespace simulator::runners {

/// A place that the camera's head can look at.
struct Position {
    /// Degrees from -180 to below 180, to the right.
    double pan;
    /// Degrees from -90 to below 90, upward.
    double tilt;
    /// Magnification from 1 to below 30.
    double zoom;
};

/// The place that a preset of this name stands for, or at which a pattern, scan or tour ends: the same one for the same
/// kind and name, on every machine.
Position positionOf(std::string_view kind, std::string_view id);

/// "pan -12.5, tilt 3.0, zoom 4.2x"
std::string describe(Position const &position);

}  // namespace simulator::runners

#endif
