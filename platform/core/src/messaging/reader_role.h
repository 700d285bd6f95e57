// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_READER_ROLE_H
#define KORVO_PLATFORM_READER_ROLE_H

#include "messaging/initiator.h"

namespace platform {

/// Has the reader role of a connection, which must be free, from construction to destruction. Both happen
/// with the initiator's mutex held; between them the thread may release it to read. The connection must
/// outlive the role.
class Initiator::ReaderRole {
  public:
    /// @param by_messaging_thread  the thread that waits on the epoll set is the one that reads, so the set need not
    ///                             change.
    ReaderRole(Hold &hold, Initiator &initiator, Connection &connection, bool by_messaging_thread = false)
        KORVO_REQUIRES(initiator.mutex_);
    ~ReaderRole();

    ReaderRole(ReaderRole const &) = delete;
    ReaderRole &operator=(ReaderRole const &) = delete;

  private:
    Hold &hold_;
    Initiator &initiator_;
    Connection &connection_;
};

/// Registers a waiter with its request and its connection while it lives; the mutex is held at both ends.
class Initiator::RegisteredWaiter {
  public:
    RegisteredWaiter(Hold &hold, Request &request, Connection &connection);
    ~RegisteredWaiter();

    RegisteredWaiter(RegisteredWaiter const &) = delete;
    RegisteredWaiter &operator=(RegisteredWaiter const &) = delete;

    Waiter waiter;

  private:
    Hold &hold_;
    Request &request_;
    Connection &connection_;
};

}  // namespace platform

#endif
