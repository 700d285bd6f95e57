// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_MESSAGING_H
#define KORVO_PLATFORM_MESSAGING_H

#include "base/handles.h"

namespace platform {

class Initiator;
class Target;

/// What a messaging handle names.
class Messaging {
  public:
    Messaging() = default;
    virtual ~Messaging() = default;
    Messaging(Messaging const &) = delete;
    Messaging &operator=(Messaging const &) = delete;

    /// Ends all traffic: calls that wait in other threads return, connections are closed, and no callback is
    /// made any more. Waits for a callback that is running, unless it is the one that called. Called once.
    virtual void close() = 0;

    virtual Initiator *asInitiator() { return nullptr; }
    virtual Target *asTarget() { return nullptr; }
};

HandleTable<Messaging> &messagingHandles();

}  // namespace platform

#endif
