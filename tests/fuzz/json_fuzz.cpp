// SPDX-License-Identifier: Apache-2.0
// Any text must be read or refused; what was read must be writable, and read back as the same value.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_input.h"
#include "json_reader.h"
#include "json_writer.h"

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    json::Object object;
    if (!json_text::read({reinterpret_cast<char const *>(data), size}, object).empty()) {
        return 0;
    }
    std::string text;
    json::Object again;
    if (!json_text::write(object, text).empty()) {
        std::abort();
    }
    // Escapes may make the text longer than a reader takes.
    if (text.size() <= json_text::longest_text &&
        (!json_text::read(text, again).empty() || again != object)) {
        std::abort();
    }
    return 0;
}
