// SPDX-License-Identifier: Apache-2.0
#include "frame/uuid_generator.h"

#include <array>
#include <atomic>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "frame/entropy.h"

namespace {

constexpr std::size_t uuid_text_length = 36;
constexpr unsigned long largest_word = 0xffffffff;

/// A whole state of the twister, so that no two generators begin alike.
struct Seed {
    std::array<std::uint32_t, boost::mt19937::state_size> words;

    Seed() { fillWithEntropy(words.data(), sizeof words); }
};

}  // namespace

struct UuidGenerator::SharedTwister : Twister {
    explicit SharedTwister(Seed const &seed) : SharedTwister(seed.words.begin(), seed.words.end()) {}

    std::atomic_flag busy = ATOMIC_FLAG_INIT;

  private:
    // The twister moves the first iterator on.
    SharedTwister(std::uint32_t const *begin, std::uint32_t const *end) : Twister(begin, end) {}
};

UuidGenerator::UuidGenerator()
    : twister_(boost::make_shared<SharedTwister>(Seed())),
      next_word_(twister_.get(), boost::uniform_int<unsigned long>(0, largest_word)) {}

char *UuidGenerator::generate() {
    boost::uuids::uuid uuid;
    auto &shared = static_cast<SharedTwister &>(*twister_);
    // Two threads inside the twister would hand out the same identifier, and the second call would receive the
    // first one's response. Entropy is slower but has no state to share.
    if (shared.busy.test_and_set(std::memory_order_acquire)) {
        fillWithEntropy(uuid.begin(), uuid.size());
    } else {
        for (auto byte = uuid.begin(); byte != uuid.end();) {
            auto const word = static_cast<std::uint32_t>(next_word_());
            for (unsigned int shift = 0; shift < 32; shift += 8) {
                *byte++ = static_cast<std::uint8_t>(word >> shift);
            }
        }
        shared.busy.clear(std::memory_order_release);
    }
    // Version 4 of the variant that the text form is for.
    auto const set = [&](std::size_t place, unsigned int mask, unsigned int bits) {
        auto const byte = uuid.begin() + place;
        *byte = static_cast<std::uint8_t>((*byte & mask) | bits);
    };
    set(6, 0x0f, 0x40);
    set(8, 0x3f, 0x80);

    char *const text = static_cast<char *>(std::malloc(uuid_text_length + 1));
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    boost::uuids::to_chars(uuid, text);
    text[uuid_text_length] = '\0';
    return text;
}
