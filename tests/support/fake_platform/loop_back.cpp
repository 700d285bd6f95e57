// SPDX-License-Identifier: Apache-2.0
#include "fake_platform/loop_back.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>

namespace fake_platform {

namespace {

// The thread that runs an entry point may close the handle through which the message came.
thread_local Handle *running_here = nullptr;

/// Copies of texts as an entry point gets them; freed afterwards unless the entry point took them.
class EntryTexts {
  public:
    explicit EntryTexts(Message const &message) {
        for (std::size_t place = 0; place < message.size(); ++place) {
            texts_[place] = message[place].has_value() ? strdup(message[place]->c_str()) : nullptr;
            if (message[place].has_value() && texts_[place] == nullptr) {
                release();
                throw std::bad_alloc();
            }
        }
    }
    ~EntryTexts() { release(); }
    EntryTexts(EntryTexts const &) = delete;
    EntryTexts &operator=(EntryTexts const &) = delete;

    char **operator[](std::size_t place) { return &texts_[place]; }

  private:
    void release() {
        for (char *text : texts_) {
            std::free(text);
        }
    }

    std::array<char *, 4> texts_{};
};

template <typename Entry>
std::function<void()> callOf(Registration<Entry> const &registration, Message const &message) {
    return [=] {
        EntryTexts texts(message);
        if constexpr (std::is_same_v<Entry, ResponseEntry>) {
            registration.entry(texts[0], texts[1], texts[2], texts[3], registration.context);
        } else {
            registration.entry(texts[0], texts[1], texts[2], registration.context);
        }
    };
}

}  // namespace

void handOut(Message const &message, std::initializer_list<char **> outs) {
    std::size_t place = 0;
    for (char **out : outs) {
        Text const &text = message[place++];
        if (out != nullptr) {
            *out = text.has_value() ? strdup(text->c_str()) : nullptr;
        }
    }
}

LoopBack &LoopBack::instance() {
    // Never destroyed, since threads of handles use it until the process ends; in memory of its own, since it
    // may be made while a test counts heap blocks.
    alignas(LoopBack) static unsigned char place[sizeof(LoopBack)];
    static LoopBack &loop_back = *new (place) LoopBack();
    return loop_back;
}

void *LoopBack::open(Handle const &handle) {
    Lock const lock(mutex_);
    if (handle.is_target && findTarget(handle.service, handle.target) != nullptr) {
        return nullptr;
    }
    handles_.push_back(std::make_shared<Handle>(handle));
    handles_.back()->address = "address-" + std::to_string(++opened_);
    return handles_.back().get();
}

korvo_core_status LoopBack::close(void *messaging) {
    Lock lock(mutex_);
    HandlePointer const handle = find(messaging);
    if (handle == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    handle->closed = true;
    handle->deliveries.clear();
    handles_.remove(handle);
    changed_.notify_all();
    int const own = running_here == handle.get() ? 1 : 0;
    changed_.wait(lock, [&] { return handle->running <= own && (own != 0 || !handle->has_thread); });
    return KORVO_CORE_STATUS_NO_ERROR;
}

std::size_t LoopBack::count() {
    Lock const lock(mutex_);
    return handles_.size();
}

korvo_core_status LoopBack::registerResponseEntry(void *initiator,
                                                  Registration<ResponseEntry> const &registration) {
    Lock const lock(mutex_);
    HandlePointer const handle = find(initiator);
    if (handle == nullptr || handle->is_target) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    if (registration.entry == nullptr) {
        handle->response_entries.clear();
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    handle->response_entries.remove_if(
        [&](Registration<ResponseEntry> const &known) { return known.context == registration.context; });
    handle->response_entries.push_back(registration);
    handle->asked.emplace(std::this_thread::get_id(), registration.context);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::registerEventEntry(void *initiator,
                                               Registration<EventEntry> const &registration) {
    Lock const lock(mutex_);
    HandlePointer const handle = find(initiator);
    if (handle == nullptr || handle->is_target) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    handle->event_entry = registration;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::registerCommandEntry(void *target,
                                                 Registration<CommandEntry> const &registration) {
    Lock const lock(mutex_);
    HandlePointer const handle = find(target);
    if (handle == nullptr || !handle->is_target) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    handle->command_entry = registration;
    deliverCommands(handle);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::subscribe(void *initiator, Text const &service, bool wanted) {
    Lock const lock(mutex_);
    HandlePointer const handle = find(initiator);
    if (handle == nullptr || handle->is_target || !service) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    if (wanted) {
        handle->subscriptions.insert(*service);
    } else {
        handle->subscriptions.erase(*service);
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::sendCommand(void *initiator, void *object, std::optional<bool> said,
                                        Text const &service, Text const &target, Text const &request_id,
                                        Text const &command) {
    Lock const lock(mutex_);
    HandlePointer const from = find(initiator);
    if (from == nullptr || from->is_target || !service || !request_id || !command) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    HandlePointer const to = findTarget(*service, target.value_or(""));
    if (to == nullptr) {
        return KORVO_CORE_STATUS_DISABLED_TARGET;
    }
    bool const asked = from->asked.erase({std::this_thread::get_id(), object}) != 0;
    if (object == nullptr ? !from->response_entries.empty() : said.value_or(asked)) {
        from->asynchronous_requests[*request_id] = object;
    }
    to->commands.push_back({from->address, request_id, command});
    deliverCommands(to);
    changed_.notify_all();
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::sendResponse(void *target, Text const &source, Text const &request_id,
                                         Text const &response) {
    Lock const lock(mutex_);
    HandlePointer const from = find(target);
    if (from == nullptr || !from->is_target || !source || !request_id || !response) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    HandlePointer const to = findInitiator(*source);
    if (to == nullptr) {
        return KORVO_CORE_STATUS_DISABLED_TARGET;
    }
    Message const message = {from->service, from->target, request_id, response};
    auto const request = to->asynchronous_requests.find(*request_id);
    if (request != to->asynchronous_requests.end()) {
        for (auto known = to->response_entries.rbegin(); known != to->response_entries.rend(); ++known) {
            if (request->second == nullptr || request->second == known->context) {
                callOnOwnThread(to, callOf(*known, message));
                return KORVO_CORE_STATUS_NO_ERROR;
            }
        }
    }
    to->responses.push_back(message);
    changed_.notify_all();
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::sendEvent(void *target, Text const &event) {
    Lock const lock(mutex_);
    HandlePointer const from = find(target);
    if (from == nullptr || !from->is_target || !event) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    for (HandlePointer const &handle : handles_) {
        if (handle->event_entry.entry != nullptr && handle->subscriptions.count(from->service) != 0) {
            callOnOwnThread(handle, callOf(handle->event_entry, {from->service, from->target, event}));
        }
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status LoopBack::receiveResponse(void *initiator, int timeout,
                                            std::function<bool(Message const &)> const &wanted,
                                            Message &response) {
    return receive(initiator, timeout, &Handle::responses, wanted, response);
}

korvo_core_status LoopBack::receiveCommand(void *target, int timeout, Message &command) {
    return receive(
        target, timeout, &Handle::commands, [](Message const &) { return true; }, command);
}

korvo_core_status LoopBack::receive(void *messaging, int timeout, std::list<Message> Handle::*queue,
                                    std::function<bool(Message const &)> const &wanted, Message &message) {
    Lock lock(mutex_);
    HandlePointer const handle = find(messaging);
    if (handle == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    std::list<Message> &messages = (*handle).*queue;
    auto const found = [&] { return std::find_if(messages.begin(), messages.end(), wanted); };
    auto const done = [&] { return handle->closed || found() != messages.end(); };
    if (timeout < 0) {
        changed_.wait(lock, done);
    } else {
        changed_.wait_for(lock, std::chrono::milliseconds(timeout), done);
    }
    auto const first = found();
    if (handle->closed || first == messages.end()) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    message = std::move(*first);
    messages.erase(first);
    return KORVO_CORE_STATUS_NO_ERROR;
}

bool LoopBack::callResponseEntry(Message const &response, void *context) {
    Lock lock(mutex_);
    HandlePointer owner;
    Registration<ResponseEntry> const registration = responseEntry(context, owner);
    if (owner == nullptr) {
        return false;
    }
    call(lock, owner, callOf(registration, response));
    return true;
}

bool LoopBack::callEventEntry(Message const &event, void *context) {
    Lock lock(mutex_);
    HandlePointer owner;
    Registration<EventEntry> const registration = eventEntry(context, owner);
    if (owner == nullptr) {
        return false;
    }
    call(lock, owner, callOf(registration, event));
    return true;
}

bool LoopBack::hasResponseEntry() {
    Lock const lock(mutex_);
    HandlePointer owner;
    (void)responseEntry(nullptr, owner);
    return owner != nullptr;
}

bool LoopBack::hasEventEntry() {
    Lock const lock(mutex_);
    HandlePointer owner;
    (void)eventEntry(nullptr, owner);
    return owner != nullptr;
}

LoopBack::HandlePointer LoopBack::find(void *messaging) {
    for (HandlePointer const &handle : handles_) {
        if (handle.get() == messaging) {
            return handle;
        }
    }
    return nullptr;
}

LoopBack::HandlePointer LoopBack::findTarget(std::string const &service, std::string const &target) {
    for (HandlePointer const &handle : handles_) {
        if (handle->is_target && handle->service == service && handle->target == target) {
            return handle;
        }
    }
    return nullptr;
}

LoopBack::HandlePointer LoopBack::findInitiator(std::string const &address) {
    for (HandlePointer const &handle : handles_) {
        if (!handle->is_target && handle->address == address) {
            return handle;
        }
    }
    return nullptr;
}

Registration<ResponseEntry> LoopBack::responseEntry(void *context, HandlePointer &owner) {
    for (auto handle = handles_.rbegin(); handle != handles_.rend(); ++handle) {
        auto const &entries = (*handle)->response_entries;
        for (auto known = entries.rbegin(); known != entries.rend(); ++known) {
            if (context == nullptr || context == known->context) {
                owner = *handle;
                return *known;
            }
        }
    }
    return {};
}

Registration<EventEntry> LoopBack::eventEntry(void *context, HandlePointer &owner) {
    for (auto handle = handles_.rbegin(); handle != handles_.rend(); ++handle) {
        Registration<EventEntry> const &known = (*handle)->event_entry;
        if (known.entry != nullptr && (context == nullptr || context == known.context)) {
            owner = *handle;
            return known;
        }
    }
    return {};
}

void LoopBack::call(Lock &lock, HandlePointer const &handle, std::function<void()> const &entry) {
    Handle *const outer = running_here;
    ++handle->running;
    running_here = handle.get();
    lock.unlock();
    auto const leave = [&] {
        lock.lock();
        running_here = outer;
        --handle->running;
        changed_.notify_all();
    };
    try {
        entry();
    } catch (...) {
        leave();
        throw;
    }
    leave();
}

void LoopBack::callOnOwnThread(HandlePointer const &handle, std::function<void()> const &entry) {
    handle->deliveries.push_back(entry);
    if (!handle->has_thread) {
        handle->has_thread = true;
        // Closing waits until the thread has said good-bye, so nobody needs to join it.
        std::thread([this, handle] { run(handle); }).detach();
    }
    changed_.notify_all();
}

void LoopBack::run(HandlePointer const &handle) {
    Lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return handle->closed || !handle->deliveries.empty(); });
        if (handle->closed) {
            handle->has_thread = false;
            std::notify_all_at_thread_exit(changed_, std::move(lock));
            return;
        }
        std::function<void()> const entry = std::move(handle->deliveries.front());
        handle->deliveries.pop_front();
        call(lock, handle, entry);
    }
}

void LoopBack::deliverCommands(HandlePointer const &target) {
    while (target->command_entry.entry != nullptr && !target->commands.empty()) {
        callOnOwnThread(target, callOf(target->command_entry, target->commands.front()));
        target->commands.pop_front();
    }
}

}  // namespace fake_platform
