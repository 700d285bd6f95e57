// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_TEST_PICTURE_H
#define KORVO_SIMULATOR_RUNNERS_TEST_PICTURE_H

#include <chrono>
#include <string>
#include <vector>

#include "simulator/time/moment.h"

namespace simulator::runners {

struct Picture {
    unsigned int width;
    unsigned int height;
    /// Three bytes a pixel (red, green, blue), row by row from the top.
    std::vector<unsigned char> pixels;
};

/// What the camera sees: eight colour bars, and a white block that crosses the picture's middle from left to right every
/// ten seconds, so that two pictures show that time has passed between them.
Picture drawTestPicture(unsigned int width, unsigned int height, std::chrono::milliseconds time);

/// The picture as a JPEG file. Throws std::runtime_error with the encoder's reason.
std::string encodeJpeg(Picture const &picture);

/// The test picture of this moment as a JPEG file, 320 by 240.
std::string takeSnapshot(Wall moment);

}  // namespace simulator::runners

#endif
