// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/ptz_head.h"

#include <cstdint>
#include <cstdio>

namespace simulator::runners {

namespace {

/// The FNV-1a hash: std::hash may differ from one library to the next.
std::uint64_t hash(std::string_view text, std::uint64_t start) {
    for (char const c : text) {
        start = (start ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    return start;
}

}  // namespace

Position positionOf(std::string_view kind, std::string_view id) {
    std::uint64_t const digest = hash(id, hash(":", hash(kind, 0xcbf29ce484222325U)));
    // In tenths, so that what is logged is the position and not a rounded one.
    auto const tenths = [digest](unsigned int shift, std::uint64_t range) {
        return static_cast<double>((digest >> shift & 0xfffffU) % range);
    };
    return {(tenths(0, 3600) - 1800) / 10, (tenths(20, 1800) - 900) / 10, (tenths(40, 290) + 10) / 10};
}

std::string describe(Position const &position) {
    char text[64];
    std::snprintf(text, sizeof text, "pan %.1f, tilt %.1f, zoom %.1fx", position.pan, position.tilt,
                  position.zoom);
    return text;
}

}  // namespace simulator::runners
