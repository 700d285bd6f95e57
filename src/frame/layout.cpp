// SPDX-License-Identifier: Apache-2.0
// The platform's libkorvo-interfaces was built with the base classes as they are here, and reads and writes their
// fields. So the places are numbers, for each word size and each of the C++ library's two kinds of strings and lists:
// a compiler or a setting that lays the classes out otherwise must not get as far as a camera.

#include <cstddef>

#include "frame/interfaces.h"

// All compilers that we use define it for classes like these.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace {

constexpr std::size_t choose(std::size_t on_32_bits, std::size_t on_64_bits) {
    return sizeof(void *) == 8 ? on_64_bits : on_32_bits;
}

/// The first number is for lists of the old kind, which do not know their length.
constexpr std::size_t chooseByLists(std::size_t with_old, std::size_t with_new) {
    return _GLIBCXX_USE_CXX11_ABI != 0 ? with_new : with_old;
}

/// Derived for the sake of what is protected.
class Layout : korvoInitiatorInterfaces {
    [[maybe_unused]] static void check() {
        static_assert(offsetof(Layout, logging_handle_) == choose(4, 8));
        static_assert(offsetof(Layout, major_version_) == choose(8, 16));
        static_assert(offsetof(Layout, minor_version_) == choose(12, 20));
        static_assert(offsetof(Layout, uuid_generator_) == choose(16, 24));
        static_assert(sizeof(UuidGenerator) == choose(20, 40));
        static_assert(sizeof(korvoInterfaces) == choose(36, 64));

        static_assert(offsetof(Layout, messaging_handle_) == choose(36, 64));
        static_assert(offsetof(Layout, owns_messaging_handle_) == choose(40, 72));
        static_assert(offsetof(Layout, commands_) == choose(44, 80));
        static_assert(offsetof(Layout, responses_) == choose(chooseByLists(84, 88), chooseByLists(160, 168)));
        static_assert(sizeof(korvoInitiatorInterfaces) ==
                      choose(chooseByLists(124, 132), chooseByLists(240, 256)));

        using Bookkeeping = decltype(commands_);
        static_assert(offsetof(Bookkeeping, logging_handle) == 0);
        static_assert(offsetof(Bookkeeping, count) == choose(4, 8));
        static_assert(offsetof(Bookkeeping, entries) == choose(8, 16));
        static_assert(offsetof(Bookkeeping, order) == choose(32, 64));
    }
};

// What the fields hold counts as well.
static_assert(sizeof(std::string) == choose(chooseByLists(4, 24), chooseByLists(8, 32)));
static_assert(sizeof(std::list<std::string>) == choose(chooseByLists(8, 12), chooseByLists(16, 24)));
static_assert(sizeof(std::map<std::string, std::string>) == choose(24, 48));

}  // namespace
