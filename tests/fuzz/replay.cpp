// SPDX-License-Identifier: Apache-2.0
// Tries every file of the folders that are named on the command line, once as it is and once for each of its
// beginnings; for builds without a fuzzer.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz_input.h"

int main(int count, char **arguments) {
    std::size_t files = 0;
    for (int index = 1; index < count; ++index) {
        for (auto const &entry : std::filesystem::directory_iterator(arguments[index])) {
            std::ifstream stream(entry.path(), std::ios::binary);
            std::vector<char> const bytes{std::istreambuf_iterator<char>(stream),
                                          std::istreambuf_iterator<char>()};
            for (std::size_t size = 0; size <= bytes.size(); ++size) {
                // A block of exactly that size, so that a sanitizer sees every step beyond its end.
                std::vector<std::uint8_t> const input(bytes.begin(),
                                                      bytes.begin() + static_cast<std::ptrdiff_t>(size));
                (void)LLVMFuzzerTestOneInput(input.data(), input.size());
            }
            ++files;
        }
    }
    std::printf("%zu files tried\n", files);
    return files == 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
