// SPDX-License-Identifier: Apache-2.0
// Any text of a settings file or a configuration must be read or refused with a reason; what was read must be written, and
// read back as the same.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "fuzz_input.h"
#include "settings/settings_document.h"

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    try {
        platform::Document const document =
            platform::documentFrom({reinterpret_cast<char const *>(data), size});
        std::string const text = platform::textOf(document);
        if (platform::textOf(platform::documentFrom(text)) != text) {
            std::abort();
        }
    } catch (platform::DamagedDocument const &error) {
        if (std::string_view(error.what()).empty()) {
            std::abort();
        }
    } catch (platform::NewerDocument const &error) {
        if (std::string_view(error.what()).empty()) {
            std::abort();
        }
    }
    return 0;
}
