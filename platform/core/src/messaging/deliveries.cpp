// SPDX-License-Identifier: Apache-2.0
#include "messaging/deliveries.h"

#include <utility>

#include "messaging/bounds.h"

namespace platform {

void Deliveries::Queue::put(std::uint64_t number, DeliveryPlace place) noexcept {
    place.item_.front().number = number;
    bytes += place->size();
    items.splice(items.end(), place.item_);
}

Delivery Deliveries::Queue::take() noexcept {
    Delivery delivery = std::move(items.front().delivery);
    items.pop_front();
    bytes -= delivery.size();
    return delivery;
}

bool Deliveries::putResponse(DeliveryPlace response, Text substitute) noexcept {
    if (responses_.hasRoom(response->size(), limits::waiting_responses, limits::waiting_response_bytes)) {
        responses_.put(next_++, std::move(response));
        return true;
    }
    if (substitute) {
        response->body = std::move(substitute);
        putSubstitute(std::move(response));
    }
    return false;
}

void Deliveries::putSubstitute(DeliveryPlace response) noexcept {
    responses_.put(next_++, std::move(response));
}

bool Deliveries::putEvent(DeliveryPlace event) noexcept {
    if (!events_.hasRoom(event->size(), limits::waiting_events, limits::waiting_event_bytes)) {
        return false;
    }
    events_.put(next_++, std::move(event));
    return true;
}

Deliveries::Kind Deliveries::take(bool with_events, Delivery &delivery) noexcept {
    bool const has_event = with_events && !events_.items.empty();
    if (!has_event && responses_.items.empty()) {
        return Kind::none;
    }
    bool const is_event = has_event && (responses_.items.empty() ||
                                        events_.items.front().number < responses_.items.front().number);
    delivery = (is_event ? events_ : responses_).take();
    return is_event ? Kind::event : Kind::response;
}

}  // namespace platform
