// SPDX-License-Identifier: Apache-2.0
// Any text of a file that the tool imports must be read as a catalogue or refused with a reason; what was read is written in the
// canonical form, and read back as the same.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz_input.h"
#include "tool/catalogue.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/transfer.h"

namespace {

std::string written(std::string const &text) {
    return tool::pretty(tool::documentOf(tool::canonical(tool::catalogueIn("FILE", text))));
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    std::string once;
    try {
        once = written({reinterpret_cast<char const *>(data), size});
    } catch (tool::Failure const &refusal) {
        if (std::string(refusal.what()).empty()) {
            std::abort();
        }
        return 0;
    }
    if (written(once) != once) {
        std::abort();
    }
    return 0;
}
