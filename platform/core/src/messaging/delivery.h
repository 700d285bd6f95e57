// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_DELIVERY_H
#define KORVO_PLATFORM_DELIVERY_H

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>

#include "base/text.h"

namespace platform {

/// Where a connection leads.
struct Address {
    std::string service;
    std::string target;
};

/// Whom the response to a request is for.
enum class Route {
    /// Sent by command_send(): the last registered response callback, or whoever receives next.
    anyone,
    /// Sent for an object: kept until it is received by its identifier.
    receiver,
    /// Sent for an object as an asynchronous one: the object's callback.
    owner_callback,
};

/// A message that waits for its callback.
struct Delivery {
    /// Whom a response is for.
    Route route = Route::anyone;
    void const *owner = nullptr;
    std::shared_ptr<Address const> address;
    /// Request identifier of a response, source of an event.
    Text first;
    Text body;
    /// Of a response, copies of the address for the callback that takes them.
    Text service;
    Text target;

    std::size_t size() const { return first.size() + body.size(); }
};

/// A delivery with its place in a queue. Who promises a call its end makes the place together with the promise, when
/// memory that runs out can still be told; filling it and putting it into its queue allocate nothing.
class DeliveryPlace {
  public:
    /// None.
    DeliveryPlace() = default;
    /// Throws std::bad_alloc.
    DeliveryPlace(Delivery delivery) { item_.push_back({0, std::move(delivery)}); }

    explicit operator bool() const { return !item_.empty(); }
    Delivery &operator*() { return item_.front().delivery; }
    Delivery *operator->() { return &item_.front().delivery; }

  private:
    friend class Deliveries;

    struct Item {
        std::uint64_t number = 0;
        Delivery delivery;
    };

    std::list<Item> item_;
};

}  // namespace platform

#endif
