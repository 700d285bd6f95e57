// SPDX-License-Identifier: Apache-2.0
#include "messaging/target.h"

#include <sys/epoll.h>

#include <random>

#include "base/wake.h"
#include "messaging/serving_role.h"

namespace platform {

namespace {

/// Differs between any two services, so that an address of a service's last run means nothing in its next.
std::string randomPrefix() {
    std::random_device entropy;
    std::string prefix;
    for (int count = 0; count < 16; ++count) {
        prefix += "0123456789abcdef"[entropy() & 0x0f];
    }
    return prefix + "-";
}

}  // namespace

Target::Target(void *logging, std::string_view service, std::string_view target, std::string_view name,
               RuntimeFolder folder)
    : log_(logging),
      service_(service),
      target_(target),
      name_(name),
      folder_(std::move(folder)),
      source_prefix_(randomPrefix()),
      subscribers_(std::make_shared<std::vector<PeerPointer> const>()) {}

korvo_core_status Target::open() {
    std::string const owner = "service " + service_ + ", target \"" + target_ + "\" (" + name_ + ")";
    epoll_.open();
    wake_ = makeWake();
    if (!epoll_.add(wake_.get(), wake_tag, EPOLLIN)) {
        log_.error("%s cannot listen: %s", owner.c_str(), errorText(errno).c_str());
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (!claim_.take(folder_, socketName(service_, target_), owner, log_)) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (!epoll_.add(claim_.listener(), listener_tag, EPOLLIN)) {
        log_.error("%s cannot listen: %s", owner.c_str(), errorText(errno).c_str());
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

void Target::close() {
    std::thread thread;
    {
        Hold hold(mutex_, log_);
        is_closing_ = true;
        signalWake(wake_);
        served_.notify_all();
        if (onOwnThread()) {
            // Called from inside a callback: the thread ends by itself when the callback returns.
            thread_.detach();
        } else {
            thread = std::move(thread_);
            served_.wait(hold.mutex(), [&]() KORVO_REQUIRES(mutex_) { return !is_serving_; });
        }
    }
    if (thread.joinable()) {
        thread.join();
    }
    auto const next = [&]() -> PeerPointer {
        Hold hold(mutex_, log_);
        return peers_.empty() ? nullptr : peers_.begin()->second;
    };
    while (PeerPointer const peer = next()) {
        flushOrDrop(peer);
        drop(peer, "the service stops");
    }
    tellOfFloods(/*all*/ true);
    claim_.release();
}

}  // namespace platform
