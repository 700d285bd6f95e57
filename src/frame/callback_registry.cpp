// SPDX-License-Identifier: Apache-2.0
#include "frame/callback_registry.h"

#include <endian.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace {

/// Small enough for an insertion in the middle, large enough for few blocks.
constexpr std::size_t largest_block = 64;

/// The first eight characters as a number, which has their order.
std::uint64_t beginningOf(char const *text) {
    std::uint64_t number = 0;
    std::memcpy(&number, text, sizeof number);
    return be64toh(number);
}

}  // namespace

bool AnyCallbackRegistry::Key::set(char const *request_id) {
    std::size_t const length = std::strlen(request_id);
    if (length > size) {
        return false;
    }
    std::memset(text, 0, size);
    std::memcpy(text, request_id, length);
    return true;
}

bool AnyCallbackRegistry::Key::operator<(Key const &other) const {
    // Nearly always the beginnings decide, and comparing them is no call.
    std::uint64_t const mine = beginningOf(text);
    std::uint64_t const its = beginningOf(other.text);
    return mine != its ? mine < its : std::memcmp(text, other.text, size) < 0;
}

template <typename AnyBlocks>
auto AnyCallbackRegistry::blockOf(AnyBlocks &blocks, Key const &key) {
    return std::prev(blocks.upper_bound(key));
}

template <typename AnyBlock>
auto AnyCallbackRegistry::placeIn(AnyBlock &block, Key const &key) {
    return std::lower_bound(block.begin(), block.end(), key,
                            [](Item const &item, Key const &wanted) { return item.key < wanted; });
}

AnyCallbackRegistry::Entry const *AnyCallbackRegistry::find(char const *request_id) const {
    Key key;
    if (!key.set(request_id) || blocks_.empty()) {
        return nullptr;
    }
    Block const &block = blockOf(blocks_, key)->second;
    auto const place = placeIn(block, key);
    return place != block.end() && !(key < place->key) ? &place->entry : nullptr;
}

void AnyCallbackRegistry::insert(char const *request_id, AnyCallback callback, void *context) {
    Item item{{}, Entry(callback, context)};
    if (!item.key.set(request_id)) {
        throw std::length_error("a request identifier is longer than a UUID");
    }
    auto found = blocks_.empty() ? blocks_.try_emplace(Key{}).first : blockOf(blocks_, item.key);
    auto place = placeIn(found->second, item.key);
    if (place != found->second.end() && !(item.key < place->key)) {
        place->entry = item.entry;
        return;
    }
    if (found->second.size() == largest_block) {
        auto const middle = found->second.begin() + largest_block / 2;
        // Before the old block loses them, so that nothing is lost when memory is short.
        auto const upper = blocks_.try_emplace(middle->key, middle, found->second.end()).first;
        found->second.erase(middle, found->second.end());
        found = item.key < upper->first ? found : upper;
        place = placeIn(found->second, item.key);
    }
    found->second.insert(place, item);
}

void AnyCallbackRegistry::cancel(AnyCallback callback, void *context) {
    Entry const match(callback, context);
    bool follows_match = false;
    for (auto found = blocks_.begin(); found != blocks_.end();) {
        Block &block = found->second;
        auto kept = block.begin();
        for (Item const &item : block) {
            // On purpose: the entry behind a match goes and the match stays. Callers rely on a registration that they
            // cancelled still being called; docs/oddities.md tells them so.
            bool const is_erased = follows_match;
            follows_match = item.entry == match;
            if (!is_erased) {
                *kept++ = item;
            }
        }
        block.erase(kept, block.end());
        found = block.empty() && found != blocks_.begin() ? blocks_.erase(found) : std::next(found);
    }
}
