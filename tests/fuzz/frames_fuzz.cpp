// SPDX-License-Identifier: Apache-2.0
// Any bytes, in pieces of any size, must be decoded without reading outside the buffer, and alike however they are cut.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "messaging/frame.h"

using platform::frame::Decoder;
using platform::frame::Frame;

namespace {

/// What the decoder makes of `bytes`, handed over `step` bytes at a time, as one text.
std::string decoded(std::string_view bytes, std::size_t step) {
    Decoder decoder;
    std::string seen;
    while (!bytes.empty()) {
        Decoder::Space const space = decoder.space();
        std::size_t const count = std::min({space.size, bytes.size(), step});
        std::memcpy(space.begin, bytes.data(), count);
        decoder.filled(count);
        bytes.remove_prefix(count);
        Frame frame;
        Decoder::Result result = Decoder::Result::frame;
        while ((result = decoder.next(frame)) == Decoder::Result::frame) {
            seen += std::to_string(static_cast<int>(frame.type)) + "[" + std::string(frame.first) + "][" +
                    std::string(frame.second) + "]";
        }
        if (result == Decoder::Result::broken) {
            return seen + decoder.problem();
        }
    }
    return seen;
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    std::string_view const bytes(reinterpret_cast<char const *>(data), size);
    std::string const whole = decoded(bytes, size);
    if (decoded(bytes, 1) != whole || decoded(bytes, 7) != whole) {
        std::abort();
    }
    return 0;
}
