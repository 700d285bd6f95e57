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

namespace platform {

/// Where a connection leads.
struct Address {
    std::string service;
    std::string target;
};

/// A thread that waits for one response.
struct Waiter {
    enum class State { waiting, answered, lost };

    std::condition_variable condition;
    State state = State::waiting;
    Text response;
};

/// Whom the response to a request is for.
enum class Route {
    /// Sent by command_send(): the last registered response callback, or whoever receives next.
    anyone,
    /// Sent for an object: kept until it is received by its identifier.
    receiver,
    /// Sent for an object that has announced it: the object's callback.
    owner_callback,
};

/// One command that was sent, from then until its response has been taken.
struct Request
    : boost::intrusive::list_base_hook<boost::intrusive::link_mode<boost::intrusive::auto_unlink>> {
    enum class Shelf { outstanding, kept, answered };

    std::string_view id;
    std::uint64_t connection = 0;
    std::shared_ptr<Address const> address;
    Route route = Route::anyone;
    void const *owner = nullptr;
    Waiter *waiter = nullptr;
    Shelf shelf = Shelf::outstanding;
    /// Set unless outstanding.
    Text response;
};

/// The requests of one initiator. It has no lock of its own: the initiator's mutex guards it.
class RequestTable {
  public:
    /// The request, or NULL.
    Request *find(std::string_view id);

    /// Adds an outstanding request; the identifier must not be in the table. When the table is full, the
    /// oldest outstanding request that nobody waits for makes room; its response will be dropped. Returns
    /// whether the request was added: false when every request in the table is being waited for.
    bool add(std::string_view id, std::uint64_t connection, std::shared_ptr<Address const> address,
             Route route, void const *owner);

    /// Keeps the response of an outstanding request until it is taken. Returns how many older ones had to go.
    unsigned int keep(Request &request, Text response);

    /// Remembers a copy of a response that went to a callback, until newer ones take its place.
    void rememberAnswered(Request &request, Text copy);

    /// The oldest kept response that is for anyone, or NULL.
    Request *firstForAnyone();

    void erase(Request &request);

    /// What was outstanding on a connection is erased; its waiters are told.
    struct Lost {
        unsigned int for_anyone = 0;
        unsigned int for_callbacks = 0;
    };
    Lost lose(std::uint64_t connection);

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
    Shelf answered_;
};

}  // namespace platform

#endif
