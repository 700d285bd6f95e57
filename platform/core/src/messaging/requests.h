// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_REQUESTS_H
#define KORVO_PLATFORM_REQUESTS_H

#include <boost/intrusive/list.hpp>
#include <boost/unordered/unordered_map.hpp>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "base/text.h"
#include "messaging/bounds.h"
#include "messaging/delivery.h"

namespace platform {

struct Request;

/// A thread that is just sending a request, and has not returned to its caller.
struct Sender {
    /// NULL once the request is no longer in the table.
    Request *request = nullptr;
    /// The request ended with its connection; its sender tells, and nobody else.
    bool is_lost = false;
};

/// A thread that waits for one response.
struct Waiter {
    enum class State {
        waiting,
        answered,
        lost,
        /// It was answered, and memory was too short for the response.
        out_of_memory,
    };

    std::condition_variable condition;
    State state = State::waiting;
    Text response;
};

/// One command that was sent, from then until its response has been taken.
struct Request
    : boost::intrusive::list_base_hook<boost::intrusive::link_mode<boost::intrusive::auto_unlink>> {
    enum class Shelf { outstanding, kept };

    std::string_view id;
    std::uint64_t connection = 0;
    std::shared_ptr<Address const> address;
    Route route = Route::anyone;
    void const *owner = nullptr;
    Waiter *waiter = nullptr;
    Sender *sender = nullptr;
    /// Of one for its owner's callback: its connection's count of those, which lives as long as the request does.
    std::size_t *unanswered = nullptr;
    Shelf shelf = Shelf::outstanding;
    /// Of a kept one, the response. Of an outstanding one for its owner's callback, what the callback gets when no
    /// response can come any more.
    Text response;
    /// Of one for its owner's callback.
    DeliveryPlace place;
};

/// The requests of one initiator. It has no lock of its own: the initiator's mutex guards it.
class RequestTable {
  public:
    /// The request, or NULL.
    Request *find(std::string_view id);

    /// Adds an outstanding request; the identifier must not be in the table.
    Request &add(std::string_view id, std::uint64_t connection, std::shared_ptr<Address const> address,
                 Route route, void const *owner);

    bool isFull() const { return map_.size() >= limits::tracked_requests; }

    /// The oldest outstanding request that no thread waits for or is just sending, or NULL.
    Request *oldestUnattended();

    /// Keeps the response of an outstanding request until it is taken. Returns how many older ones had to go.
    unsigned int keep(Request &request, Text response) noexcept;

    /// The oldest kept response that is for anyone, or NULL.
    Request *firstForAnyone();
    void erase(Request &request) noexcept;
    /// What was outstanding on a connection is erased, and its waiters and senders are told. What was for callbacks and
    /// has been sent is handed to `end` before; other requests that nobody waits for are counted. Throws what `end` does
    /// and nothing else.
    struct Lost {
        unsigned int for_anyone = 0;
        unsigned int for_callbacks = 0;
    };
    Lost lose(std::uint64_t connection, std::function<void(Request &)> const &end);

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    using Map = boost::unordered_map<std::string, Request, Hash, std::equal_to<>>;
    using List = boost::intrusive::list<Request, boost::intrusive::constant_time_size<false>>;

    /// Responses of one kind, oldest first, with what they cost.
    struct Shelf {
        List list;
        std::size_t count = 0;
        std::size_t bytes = 0;

        void put(Request &request);
        void take(Request &request);
    };

    Shelf &shelfOf(Request const &request);

    Map map_;
    List outstanding_;
    Shelf kept_;
    Shelf kept_for_anyone_;
};

}  // namespace platform

#endif
