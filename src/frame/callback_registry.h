// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_CALLBACK_REGISTRY_H
#define KORVO_FRAME_CALLBACK_REGISTRY_H

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

#include "frame/mutex.h"

/// A callback of any signature; CallbackRegistry<> and the code that calls it agree on the real one.
using AnyCallback = void (*)();

/// The pending asynchronous calls of one method: request identifier to callback and context, in the order of the
/// identifiers' texts. Entries leave only through cancel(), so there may be millions.
class AnyCallbackRegistry {
  public:
    using Entry = std::pair<AnyCallback, void *>;

    /// Guards the entries, and is held while a callback of the method runs.
    Mutex &mutex() KORVO_THREAD_ATTRIBUTE(lock_returned(mutex_)) { return mutex_; }

    /// The entry of the identifier, or NULL. Valid until the next insert() or cancel().
    Entry const *find(char const *request_id) const KORVO_REQUIRES(mutex_);

    /// Whether the calling thread holds the mutex and the identifier has an entry: it is just being registered, or
    /// called back. Takes no lock.
    bool isInHand(char const *request_id) const KORVO_NO_ANALYSIS {
        return mutex_.isHeldByThisThread() && find(request_id) != nullptr;
    }

    /// Adds an entry, or replaces the one with the same identifier. Throws std::bad_alloc, and std::length_error for
    /// an identifier that is longer than a UUID's text.
    void insert(char const *request_id, AnyCallback callback, void *context) KORVO_REQUIRES(mutex_);

    /// Erases the entry that follows each entry with this callback and context, whether that one is erased too or
    /// not. An entry that matches and is not such a follower stays.
    void cancel(AnyCallback callback, void *context) KORVO_REQUIRES(mutex_);

  private:
    /// An identifier's text, filled up with zeros, which keeps the order of texts.
    struct Key {
        static constexpr std::size_t size = 36;

        char text[size];

        /// False for a text that is too long to be an identifier.
        bool set(char const *request_id);
        bool operator<(Key const &other) const;
    };

    struct Item {
        Key key;
        Entry entry;
    };

    // Entries stand in order in blocks of moderate size, since a walk along a million nodes waits for memory at each.
    // Each block holds the keys from its own in the map to the next one's; the first one's own is empty.
    using Block = std::vector<Item>;
    using Blocks = std::map<Key, Block>;

    /// Where the key is or belongs, for constant containers and others; there is a block.
    template <typename AnyBlocks>
    static auto blockOf(AnyBlocks &blocks, Key const &key);
    template <typename AnyBlock>
    static auto placeIn(AnyBlock &block, Key const &key);

    Blocks blocks_ KORVO_GUARDED_BY(mutex_);
    Mutex mutex_;
};

/// A registry that takes callbacks of one signature only.
template <typename Callback>
class CallbackRegistry : public AnyCallbackRegistry {
  public:
    void insert(char const *request_id, Callback callback, void *context) KORVO_REQUIRES(mutex()) {
        AnyCallbackRegistry::insert(request_id, reinterpret_cast<AnyCallback>(callback), context);
    }

    void cancel(Callback callback, void *context) KORVO_REQUIRES(mutex()) {
        AnyCallbackRegistry::cancel(reinterpret_cast<AnyCallback>(callback), context);
    }
};

#endif
