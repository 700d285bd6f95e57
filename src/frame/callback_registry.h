// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_CALLBACK_REGISTRY_H
#define KORVO_FRAME_CALLBACK_REGISTRY_H

#include <map>
#include <string>
#include <utility>

#include "frame/mutex.h"

/// A callback of any signature; CallbackRegistry<> and the code that calls it agree on the real one.
using AnyCallback = void (*)();

/// The pending asynchronous calls of one method: request identifier to callback and context, in the order of the
/// identifiers' texts. Entries leave only through cancel().
class AnyCallbackRegistry {
  public:
    using Entry = std::pair<AnyCallback, void *>;

    /// Guards the entries, and is held while a callback of the method runs.
    Mutex &mutex() KORVO_THREAD_ATTRIBUTE(lock_returned(mutex_)) { return mutex_; }

    /// The entry of the identifier, or NULL.
    Entry const *find(char const *request_id) const KORVO_REQUIRES(mutex_);

    /// Adds an entry, or replaces the one with the same identifier.
    void insert(char const *request_id, AnyCallback callback, void *context) KORVO_REQUIRES(mutex_);

    /// Erases the entry that follows each entry with this callback and context, as long as erased entries match
    /// themselves. An entry that matches and is not such a follower stays.
    void cancel(AnyCallback callback, void *context) KORVO_REQUIRES(mutex_);

  private:
    std::map<std::string, Entry> entries_ KORVO_GUARDED_BY(mutex_);
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
