// SPDX-License-Identifier: Apache-2.0
#include "messaging/requests.h"

namespace platform {

void RequestTable::Shelf::put(Request &request) {
    list.push_back(request);
    ++count;
    bytes += request.response.size();
}

void RequestTable::Shelf::take(Request &request) {
    request.unlink();
    --count;
    bytes -= request.response.size();
}

RequestTable::Shelf &RequestTable::shelfOf(Request const &request) {
    return request.route == Route::anyone ? kept_for_anyone_ : kept_;
}

Request *RequestTable::find(std::string_view id) {
    auto const entry = map_.find(id);
    return entry == map_.end() ? nullptr : &entry->second;
}

Request &RequestTable::add(std::string_view id, std::uint64_t connection,
                           std::shared_ptr<Address const> address, Route route, void const *owner) {
    auto const entry = map_.try_emplace(std::string(id)).first;
    Request &request = entry->second;
    request.id = entry->first;
    request.connection = connection;
    request.address = std::move(address);
    request.route = route;
    request.owner = owner;
    outstanding_.push_back(request);
    return request;
}

Request *RequestTable::oldestUnattended() {
    for (Request &request : outstanding_) {
        if (request.waiter == nullptr && request.sender == nullptr) {
            return &request;
        }
    }
    return nullptr;
}

unsigned int RequestTable::keep(Request &request, Text response) noexcept {
    request.unlink();
    request.response = std::move(response);
    request.shelf = Request::Shelf::kept;
    Shelf &shelf = shelfOf(request);
    shelf.put(request);
    unsigned int dropped = 0;
    while (shelf.count > limits::kept_responses || shelf.bytes > limits::kept_response_bytes) {
        erase(shelf.list.front());
        ++dropped;
    }
    return dropped;
}

Request *RequestTable::firstForAnyone() {
    return kept_for_anyone_.list.empty() ? nullptr : &kept_for_anyone_.list.front();
}

void RequestTable::erase(Request &request) noexcept {
    if (request.sender != nullptr) {
        request.sender->request = nullptr;
    }
    if (request.unanswered != nullptr) {
        --*request.unanswered;
    }
    if (request.shelf != Request::Shelf::outstanding) {
        shelfOf(request).take(request);
    }
    map_.erase(map_.find(request.id));
}

RequestTable::Lost RequestTable::lose(std::uint64_t connection, std::function<void(Request &)> const &end) {
    Lost lost;
    for (auto place = outstanding_.begin(); place != outstanding_.end();) {
        Request &request = *place++;
        if (request.connection != connection) {
            continue;
        }
        if (request.sender != nullptr) {
            request.sender->is_lost = true;
        } else if (request.waiter == nullptr && request.route == Route::owner_callback) {
            ++lost.for_callbacks;
            end(request);
        }
        if (request.waiter != nullptr) {
            request.waiter->state = Waiter::State::lost;
            request.waiter->condition.notify_one();
        } else if (request.route == Route::anyone) {
            ++lost.for_anyone;
        }
        erase(request);
    }
    return lost;
}

}  // namespace platform
