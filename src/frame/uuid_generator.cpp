// SPDX-License-Identifier: Apache-2.0
#include "frame/uuid_generator.h"

#include <atomic>
#include <boost/smart_ptr/make_shared.hpp>
#include <boost/uuid/random_generator.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t uuid_text_length = 36;

}  // namespace

struct UuidGenerator::Source {
    boost::uuids::random_generator_mt19937 twister;
    std::atomic_flag busy = ATOMIC_FLAG_INIT;
};

UuidGenerator::UuidGenerator() : source_(boost::make_shared<Source>()) {}

char *UuidGenerator::generate() const {
    boost::uuids::uuid uuid;
    // Two threads inside the twister would hand out the same identifier, and the second call would receive the
    // first one's response. Entropy is slower but has no state to share.
    if (source_->busy.test_and_set(std::memory_order_acquire)) {
        uuid = boost::uuids::random_generator_pure()();
    } else {
        uuid = source_->twister();
        source_->busy.clear(std::memory_order_release);
    }

    char *const text = static_cast<char *>(std::malloc(uuid_text_length + 1));
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    boost::uuids::to_chars(uuid, text);
    text[uuid_text_length] = '\0';
    return text;
}
