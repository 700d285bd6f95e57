// SPDX-License-Identifier: Apache-2.0
// Initiator: subscriptions, which outlive the connections that they are made on.
#include <algorithm>
#include <optional>

#include "error_words.h"
#include "messaging/initiator.h"

namespace platform {

korvo_core_status Initiator::subscribe(std::string_view service) {
    std::string const name(service);
    bool is_watching = false;
    {
        Hold hold(mutex_, log_);
        if (is_closing_) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        if (subscriptions_.count(name) != 0) {
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        is_watching = isWatching();
    }
    // Watched before it is looked at, so that no service slips through in between.
    if (!is_watching && !startWatch()) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    {
        Hold hold(mutex_, log_);
        subscriptions_.emplace(name, Subscription());
    }
    scan(name);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status Initiator::unsubscribe(std::string_view service) {
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    auto const subscription = subscriptions_.find(service);
    if (subscription == subscriptions_.end()) {
        hold.warn("cannot unsubscribe from service %.*s: it is not subscribed to",
                  static_cast<int>(service.size()), service.data());
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    subscriptions_.erase(subscription);
    for (auto lost = lost_subscriptions_.begin(); lost != lost_subscriptions_.end();) {
        lost = lost->second.service == service ? lost_subscriptions_.erase(lost) : std::next(lost);
    }
    for (ConnectionPointer connection = connectionAfter(0); connection != nullptr;
         connection = connectionAfter(connection->serial)) {
        if (connection->is_subscribed && connection->address->service == service) {
            connection->is_subscribed = false;
            writeControl(hold, *connection, frame::Type::unsubscribe);
        }
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

bool Initiator::startWatch() {
    FolderWatch watch;
    if (!watch.start(folder_, log_)) {
        return false;
    }
    Hold hold(mutex_, log_);
    // Another thread's has been told of what came meanwhile, and stays.
    if (isWatching()) {
        return true;
    }
    if (is_running_ && !listenTo(watch)) {
        hold.warn("cannot watch the runtime folder %s: %s", folder_.path().c_str(), ErrorText(errno).get());
        return false;
    }
    watch_ = std::move(watch);
    watch_is_over_ = false;
    return true;
}

void Initiator::scan(std::string const &service) noexcept {
    bool is_done = false;
    try {
        std::optional<std::vector<std::string>> const names = folder_.names(log_);
        is_done = names.has_value();
        if (is_done) {
            for (std::string const &name : *names) {
                is_done = (!isSocketOf(name, service) || attach(service, name)) && is_done;
            }
        }
    } catch (std::exception const &error) {
        log_.warning("cannot look for the sockets of service %s: %s", service.c_str(), wordsOf(error));
        is_done = false;
    }
    Hold hold(mutex_, log_);
    if (!is_done) {
        scanLater(service);
        return;
    }
    auto const subscription = subscriptions_.find(service);
    if (subscription != subscriptions_.end() && isWatching()) {
        subscription->second.pause = limits::reconnect_pause;
    }
}

bool Initiator::attach(std::string const &service, std::string const &socket_name) {
    ConnectionPointer connection;
    auto const address = std::make_shared<Address const>(Address{service, ""});
    std::string problem;
    korvo_core_status const status = connectByName(socket_name, address, false, connection, problem);
    Hold hold(mutex_, log_);
    if (status == KORVO_CORE_STATUS_IPC_FAILED) {
        (void)fail(hold, Phase::connect, address.get(), problem);
        return false;
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR || !connection->is_alive || connection->is_subscribed ||
        subscriptions_.count(service) == 0) {
        return true;
    }
    connection->is_subscribed = true;
    try {
        writeControl(hold, *connection, frame::Type::subscribe);
    } catch (...) {
        hold.ensureLocked();
        connection->is_subscribed = false;
        throw;
    }
    adoptSubscription(hold, *connection);
    return true;
}

void Initiator::scanLater(std::string_view service) {
    auto const subscription = subscriptions_.find(service);
    if (subscription == subscriptions_.end()) {
        return;
    }
    auto &[due, pause] = subscription->second;
    due = std::min(due, Clock::now() + pause);
    pause = std::min(2 * pause, limits::longest_reconnect_pause);
    wakeThread();
}

void Initiator::handleFolderChange(Hold &hold) {
    try {
        FolderWatch::Change const change = watch_.look();
        if (change.is_over) {
            hold.warn("the runtime folder %s was removed; made again", folder_.path().c_str());
            watch_is_over_ = true;
        }
        if (change.is_over || change.is_incomplete) {
            for (auto &entry : subscriptions_) {
                entry.second.due = Clock::now();
            }
        }
        for (std::string const &name : change.names) {
            for (auto &[service, subscription] : subscriptions_) {
                if (isSocketOf(name, service)) {
                    subscription.due = Clock::now();
                }
            }
        }
    } catch (std::bad_alloc const &) {
        // Nobody knows whose sockets have come.
        for (auto &entry : subscriptions_) {
            scanLater(entry.first);
        }
    }
}

void Initiator::restoreSubscriptions(Hold &hold) {
    std::vector<std::string> due;
    auto const now = Clock::now();
    for (auto const &[service, subscription] : subscriptions_) {
        if (subscription.due <= now) {
            due.push_back(service);
        }
    }
    if (due.empty()) {
        return;
    }
    bool is_watching = true;
    if (watch_is_over_) {
        // First, so that no service slips through in between.
        hold.unlock(mutex_);
        is_watching = startWatch();
        hold.lock(mutex_);
    }
    for (std::string const &service : due) {
        auto const subscription = subscriptions_.find(service);
        if (subscription != subscriptions_.end() && subscription->second.due <= now) {
            subscription->second.due = Clock::time_point::max();
        }
        if (!is_watching) {
            scanLater(service);
        }
    }
    hold.unlock(mutex_);
    for (std::string const &service : due) {
        scan(service);
    }
    hold.lock(mutex_);
}

int Initiator::restoreTimeout() const {
    auto next = Clock::time_point::max();
    for (auto const &entry : subscriptions_) {
        next = std::min(next, entry.second.due);
    }
    if (next == Clock::time_point::max()) {
        return -1;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, limits::reconnect_pause.count()));
}

}  // namespace platform
