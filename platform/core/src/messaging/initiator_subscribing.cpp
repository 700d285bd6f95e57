// SPDX-License-Identifier: Apache-2.0
// Initiator: subscriptions, which outlive the connections that they are made on.
#include <filesystem>
#include <limits>

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
        is_watching = watch_.descriptor() >= 0;
    }
    // Watched before it is looked at, so that no service slips through in between.
    if (!is_watching && !startWatch(false)) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    {
        Hold hold(mutex_, log_);
        subscriptions_.insert(name);
    }
    scan(name);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status Initiator::unsubscribe(std::string_view service) {
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (subscriptions_.erase(std::string(service)) == 0) {
        hold.warn("cannot unsubscribe from service " + std::string(service) + ": it is not subscribed to");
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    for (auto lost = lost_subscriptions_.begin(); lost != lost_subscriptions_.end();) {
        lost = lost->second.service == service ? lost_subscriptions_.erase(lost) : std::next(lost);
    }
    std::vector<ConnectionPointer> subscribed;
    for (ConnectionPointer const &connection : connections_) {
        if (connection->is_subscribed && connection->address->service == service) {
            connection->is_subscribed = false;
            subscribed.push_back(connection);
        }
    }
    for (ConnectionPointer const &connection : subscribed) {
        writeControl(hold, *connection, frame::Type::unsubscribe);
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

bool Initiator::startWatch(bool anew) {
    FolderWatch watch;
    if (!watch.start(folder_, log_)) {
        return false;
    }
    Hold hold(mutex_, log_);
    if (anew || watch_.descriptor() < 0) {
        watch_ = std::move(watch);
        watchFolder();
    }
    return true;
}

void Initiator::scan(std::string const &service) {
    std::vector<std::string> names;
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder_.path(), failure);
    while (!failure && entry != std::filesystem::directory_iterator()) {
        std::string name = entry->path().filename().string();
        if (isSocketOf(name, service)) {
            names.push_back(std::move(name));
        }
        entry.increment(failure);
    }
    for (std::string const &name : names) {
        attach(service, name);
    }
}

void Initiator::attach(std::string const &service, std::string const &socket_name) {
    ConnectionPointer connection;
    auto const address = std::make_shared<Address const>(Address{service, ""});
    std::string problem;
    korvo_core_status const status = connectByName(socket_name, address, false, connection, problem);
    Hold hold(mutex_, log_);
    if (status == KORVO_CORE_STATUS_IPC_FAILED) {
        (void)fail(hold, Phase::connect, address.get(), problem);
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR || !connection->is_alive || connection->is_subscribed ||
        subscriptions_.count(service) == 0) {
        return;
    }
    connection->is_subscribed = true;
    adoptSubscription(hold, *connection);
    writeControl(hold, *connection, frame::Type::subscribe);
}

void Initiator::handleFolderChange(Hold &hold) {
    FolderWatch::Change const change = watch_.look();
    std::set<std::string> const services = subscriptions_;
    hold.unlock(mutex_);
    bool look_at_all = change.is_incomplete;
    if (change.is_over) {
        log_.warning("the runtime folder %s was removed; made again", folder_.path().c_str());
        look_at_all = startWatch(true);
    }
    for (std::string const &service : services) {
        if (look_at_all) {
            scan(service);
        }
        for (std::string const &name : change.names) {
            if (isSocketOf(name, service)) {
                attach(service, name);
            }
        }
    }
    hold.lock(mutex_);
}

void Initiator::restoreSubscriptions(Hold &hold) {
    if (lost_subscriptions_.empty()) {
        return;
    }
    std::vector<std::pair<std::string, std::string>> due;
    auto const now = Clock::now();
    for (auto &[socket_name, lost] : lost_subscriptions_) {
        if (lost.due <= now) {
            // Later ones are made when the service's socket appears.
            lost.due = Clock::time_point::max();
            due.emplace_back(lost.service, socket_name);
        }
    }
    if (due.empty()) {
        return;
    }
    hold.unlock(mutex_);
    for (auto const &[service, socket_name] : due) {
        attach(service, socket_name);
    }
    hold.lock(mutex_);
}

int Initiator::restoreTimeout() const {
    auto next = Clock::time_point::max();
    for (auto const &entry : lost_subscriptions_) {
        next = std::min(next, entry.second.due);
    }
    if (next == Clock::time_point::max()) {
        return -1;
    }
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, limits::reconnect_pause.count()));
}

}  // namespace platform
