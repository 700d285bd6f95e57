// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_DELIVERIES_H
#define KORVO_PLATFORM_DELIVERIES_H

#include <cstddef>
#include <cstdint>
#include <list>

#include "messaging/delivery.h"

namespace platform {

/// The messages of one initiator that wait for its callbacks, within bounds. It has no lock of its own: the
/// initiator's mutex guards it. Nothing here throws.
class Deliveries {
  public:
    /// Adds a response. Where it has no room, `substitute` is delivered in place of its body, if there is one: what has
    /// been promised an end gets one. Returns whether the response itself was added.
    bool putResponse(DeliveryPlace response, Text substitute) noexcept;

    /// Adds a response that stands in for one that will not come; it always has room.
    void putSubstitute(DeliveryPlace response) noexcept;

    /// Returns false, and drops the event, where it has no room.
    bool putEvent(DeliveryPlace event) noexcept;

    enum class Kind { none, response, event };

    /// Takes the next message, in the order of their arrival; events only when `with_events`.
    Kind take(bool with_events, Delivery &delivery) noexcept;

    /// How many responses wait.
    std::size_t responses() const { return responses_.items.size(); }

  private:
    struct Queue {
        std::list<DeliveryPlace::Item> items;
        std::size_t bytes = 0;

        bool hasRoom(std::size_t more, std::size_t most_items, std::size_t most_bytes) const {
            return items.size() < most_items && bytes <= most_bytes && more <= most_bytes - bytes;
        }
        void put(std::uint64_t number, DeliveryPlace place) noexcept;
        Delivery take() noexcept;
    };

    Queue responses_;
    Queue events_;
    std::uint64_t next_ = 0;
};

}  // namespace platform

#endif
