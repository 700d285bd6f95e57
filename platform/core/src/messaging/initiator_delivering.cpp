// SPDX-License-Identifier: Apache-2.0
// Initiator: callbacks and the thread that makes them.
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "base/wake.h"
#include "base/worker.h"
#include "error_words.h"
#include "messaging/initiator.h"
#include "messaging/reader_role.h"

namespace platform {

namespace {

// What an event of the epoll set is about, where it is not a connection's serial number.
constexpr std::uint64_t wake_tag = 0;
constexpr std::uint64_t folder_tag = 1;

/// Adds the registration, or replaces the one with the same context.
template <typename Registrations, typename Callback>
void put(Registrations &registrations, Callback callback, void *context) {
    for (auto &registration : registrations) {
        if (registration.context == context) {
            registration.callback = callback;
            return;
        }
    }
    registrations.push_back({callback, context});
}

/// Removes the registration of the context; all of them for NULL.
template <typename Registrations>
void remove(Registrations &registrations, void const *context) {
    registrations.erase(std::remove_if(registrations.begin(), registrations.end(),
                                       [&](auto const &registration) {
                                           return context == nullptr || registration.context == context;
                                       }),
                        registrations.end());
}

template <typename Registrations>
auto find(Registrations const &registrations, void const *context) {
    return std::find_if(registrations.begin(), registrations.end(),
                        [&](auto const &registration) { return registration.context == context; });
}

}  // namespace

korvo_core_status Initiator::setResponseCallback(ResponseCallback callback, void *context) {
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (callback == nullptr) {
        remove(response_callbacks_, context);
        if (find(response_callbacks_, last_response_context_) == response_callbacks_.end()) {
            last_response_context_ =
                response_callbacks_.empty() ? nullptr : response_callbacks_.back().context;
        }
        waitForCallback(hold, context);
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    startThread(hold);
    put(response_callbacks_, callback, context);
    last_response_context_ = context;
    // What came while nobody was there to take it.
    while (Request *const request = requests_.firstForAnyone()) {
        DeliveryPlace place = placeFor(*request);
        place->body = std::move(request->response);
        requests_.erase(*request);
        queueResponse(hold, std::move(place), Text());
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status Initiator::setEventCallback(EventCallback callback, void *context) {
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (callback == nullptr) {
        remove(event_callbacks_, context);
        waitForCallback(hold, context);
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    startThread(hold);
    put(event_callbacks_, callback, context);
    wakeThread();
    return KORVO_CORE_STATUS_NO_ERROR;
}

void Initiator::waitForCallback(Hold &hold, void const *context) {
    if (onMessagingThread()) {
        return;
    }
    // Without callbacks neither thread has anything to do any more, and they end.
    wakeThread();
    nudgeWriter();
    fence_.wait(hold, context);
}

void Initiator::startThread(Hold &hold) {
    if (is_running_) {
        return;
    }
    if (thread_.joinable()) {
        // It has given up is_running_ as its last act under the mutex, so this does not wait for long.
        thread_.join();
    }
    process::Descriptor wake = makeWake();
    epoll_.open();
    wake_ = std::move(wake);
    try {
        if (!epoll_.add(wake_.get(), wake_tag, EPOLLIN)) {
            throw std::system_error(errno, std::generic_category(), "epoll");
        }
        for (ConnectionPointer const &connection : connections_) {
            if (!watch(*connection)) {
                throw std::system_error(errno, std::generic_category(), "epoll");
            }
        }
        if (watch_.descriptor() >= 0 && !listenTo(watch_)) {
            throw std::system_error(errno, std::generic_category(), "epoll");
        }
        thread_ = startWorker("korvo-messaging", [self = shared_from_this()] { self->run(); });
    } catch (std::exception const &error) {
        hold.warn("cannot start a thread for callbacks: %s", wordsOf(error));
        stopPolling();
        throw;
    }
    thread_id_ = thread_.get_id();
    is_running_ = true;
}

void Initiator::stopPolling() {
    for (ConnectionPointer const &connection : connections_) {
        connection->is_polled = false;
    }
    epoll_.close();
    wake_.reset();
}

bool Initiator::listenTo(FolderWatch const &watch) {
    return epoll_.add(watch.descriptor(), folder_tag, EPOLLIN);
}

void Initiator::run() {
    Hold hold(mutex_, log_);
    for (;;) {
        try {
            do {
                deliver(hold);
                // While it writes more may come, its own answers to what it cannot write among that.
            } while (writeGathered(hold));
            if (is_closing_ || !hasCallbacks()) {
                break;
            }
            int const timeout = restoreTimeout();
            int const epoll = epoll_.descriptor();
            is_asleep_ = true;
            hold.unlock(mutex_);
            std::array<epoll_event, 16> events;
            int const count = epoll_wait(epoll, events.data(), static_cast<int>(events.size()), timeout);
            hold.lock(mutex_);
            is_asleep_ = false;
            for (int index = 0; index < count; ++index) {
                epoll_event const &event = events.at(static_cast<std::size_t>(index));
                handleEpollEvent(hold, event.data.u64);
            }
            restoreSubscriptions(hold);
        } catch (std::exception const &error) {
            // What could not be done is still there to be done; without the pause this would be all that it does.
            hold.ensureLocked();
            if (pauses_.count()) {
                hold.warn("the messaging thread pauses, since it cannot do its work: %s (%llu times so far)",
                          wordsOf(error), pauses_.total());
            }
            hold.unlock(mutex_);
            std::this_thread::sleep_for(limits::failure_rest);
            hold.lock(mutex_);
        }
    }
    stopPolling();
    is_running_ = false;
}

void Initiator::handleEpollEvent(Hold &hold, std::uint64_t tag) {
    if (tag == wake_tag) {
        drainWake(wake_);
        return;
    }
    if (tag == folder_tag) {
        handleFolderChange(hold);
        return;
    }
    ConnectionPointer const connection = findConnection(tag);
    if (connection != nullptr && !connection->has_reader) {
        ReaderRole const role(hold, *this, *connection, true);
        hold.unlock(mutex_);
        (void)read(hold, *connection, MSG_DONTWAIT);
    }
}

void Initiator::deliver(Hold &hold) {
    Delivery delivery;
    while (!is_closing_) {
        // Events stay until somebody registers for them; responses were queued for somebody.
        Deliveries::Kind const kind = deliveries_.take(!event_callbacks_.empty(), delivery);
        if (kind == Deliveries::Kind::none) {
            return;
        }
        if (kind == Deliveries::Kind::event) {
            try {
                callEvent(hold, delivery);
            } catch (std::bad_alloc const &) {
                loseEvent(hold, "memory is too short for events");
            }
        } else {
            callResponse(hold, std::move(delivery));
        }
    }
}

void Initiator::callResponse(Hold &hold, Delivery delivery) {
    auto const registration =
        find(response_callbacks_,
             delivery.route == Route::owner_callback ? delivery.owner : last_response_context_);
    if (registration == response_callbacks_.end()) {
        return;
    }
    ResponseCallback const callback = registration->callback;
    void *const context = registration->context;
    call(hold, context, [&] {
        LentText service(std::move(delivery.service));
        LentText target(std::move(delivery.target));
        LentText request_id(std::move(delivery.first));
        LentText response(std::move(delivery.body));
        callback(service.address(), target.address(), request_id.address(), response.address(), context);
    });
}

void Initiator::callEvent(Hold &hold, Delivery const &delivery) {
    // A callback may register and unregister others.
    called_ = event_callbacks_;
    for (auto const &[callback, context] : called_) {
        if (is_closing_ || find(event_callbacks_, context) == event_callbacks_.end()) {
            continue;
        }
        char **const service = lent_service_.lend(delivery.address->service);
        char **const source = lent_source_.lend(delivery.first.view());
        char **const event = lent_event_.lend(delivery.body.view());
        call(hold, context,
             [&, callback = callback, context = context] { callback(service, source, event, context); });
    }
}

template <typename Callback>
void Initiator::call(Hold &hold, void *context, Callback callback) {
    fence_.run(hold, mutex_, context, [&] {
        try {
            callback();
        } catch (std::exception const &error) {
            log_.error("a callback threw an exception: %s", wordsOf(error));
        } catch (...) {
            log_.error("a callback threw something that is no exception");
        }
        process::endOrphan(generation_);
    });
}

void Initiator::wakeThread() {
    if (is_running_ && is_asleep_) {
        is_asleep_ = false;
        signalWake(wake_);
    }
}

void Initiator::wakeReceivers() {
    receivers_.notify_all();
    if (receivers_have_reader_) {
        signalWake(receivers_wake_);
    }
}

}  // namespace platform
