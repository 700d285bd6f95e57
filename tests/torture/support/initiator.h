// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_INITIATOR_H
#define KORVO_TESTS_TORTURE_INITIATOR_H

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvo_core.h"
#include "korvo_core_private.h"
#include "live_blocks/live_blocks.h"
#include "processes/limits.h"
#include "support/peer.h"

namespace torture {

using processes::long_timeout_ms;
using processes::milliseconds;
using processes::patience;

inline constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;
inline constexpr auto lost = KORVO_CORE_STATUS_IPC_FAILED;

inline constexpr char command[] = "a command";
inline constexpr char substitute[] = "nothing came";

inline bool isShortage(korvo_core_status status) {
    return status == KORVO_CORE_STATUS_ALLOC_FAILED || status == lost;
}

/// An initiator with what its callbacks got. Nothing of its own fails or is recorded.
class Initiator {
  public:
    ~Initiator() { close(); }

    korvo_core_status open() { return korvo_core_ipc_initiator_init(nullptr, "torture", &handle_, 0); }
    void close() {
        if (handle_ != nullptr) {
            EXPECT_EQ(korvo_core_ipc_deinit(std::exchange(handle_, nullptr)), done);
        }
    }
    void openOrDie() { ASSERT_EQ(open(), done); }

    void *handle() const { return handle_; }

    korvo_core_status registerForResponses() {
        return korvo_core_ipc_initiator_response_receive_callback(handle_, takeResponse, this);
    }
    korvo_core_status registerForEvents() {
        return korvo_core_ipc_initiator_event_receive_callback(handle_, takeEvent, this);
    }
    korvo_core_status subscribe() { return korvo_core_ipc_initiator_event_subscribe(handle_, Peer::service); }

    korvo_core_status sendAsynchronously(char const *request_id, std::string_view text = command,
                                         char const *target = "") {
        return korvo_core_private_command_send(handle_, Peer::service, target, request_id, text.data(),
                                               text.size(), this, substitute);
    }
    /// A whole synchronous call.
    korvo_core_status exchange(char const *request_id) {
        korvo_core_status status = korvo_core_private_command_send(
            handle_, Peer::service, "", request_id, command, sizeof command - 1, this, nullptr);
        return status == done ? receive(request_id) : status;
    }
    korvo_core_status receive(char const *request_id) {
        char *response = nullptr;
        std::size_t length = 0;
        korvo_core_status const status =
            korvo_core_private_response_receive(handle_, long_timeout_ms, request_id, &response, &length);
        if (status == done) {
            EXPECT_STREQ(response, command);
            std::free(response);
        }
        return status;
    }

    /// Waits for so many callbacks with this identifier.
    bool waitForResponse(char const *request_id, milliseconds limit = patience) {
        live_blocks::Unnoticed const unnoticed;
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return responses_[request_id].size() == 1; });
    }
    std::vector<std::string> responses(char const *request_id) {
        live_blocks::Unnoticed const unnoticed;
        std::lock_guard<std::mutex> const lock(mutex_);
        return responses_[request_id];
    }
    bool waitForEvent(char const *event, milliseconds limit = patience) {
        live_blocks::Unnoticed const unnoticed;
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return events_.count(event) != 0; });
    }

  private:
    static void takeResponse(char **, char **, char **request_id, char **response, void *context) {
        live_blocks::Unnoticed const unnoticed;
        auto &self = *static_cast<Initiator *>(context);
        std::lock_guard<std::mutex> const lock(self.mutex_);
        self.responses_[*request_id].emplace_back(*response);
        self.changed_.notify_all();
    }
    static void takeEvent(char **, char **, char **event, void *context) {
        live_blocks::Unnoticed const unnoticed;
        auto &self = *static_cast<Initiator *>(context);
        std::lock_guard<std::mutex> const lock(self.mutex_);
        self.events_.insert(*event);
        self.changed_.notify_all();
    }

    void *handle_ = nullptr;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, std::vector<std::string>> responses_;
    std::set<std::string> events_;
};

/// The next calls of every kind are served.
inline void expectUsable(Initiator &initiator) {
    live_blocks::Unnoticed const unnoticed;
    EXPECT_EQ(initiator.exchange("afterwards"), done);
    EXPECT_EQ(initiator.registerForResponses(), done);
    EXPECT_EQ(initiator.sendAsynchronously("called back"), done);
    EXPECT_TRUE(initiator.waitForResponse("called back")) << "no callback afterwards";
    EXPECT_EQ(initiator.responses("called back"), std::vector<std::string>{command});
}
/// Whether events arrive, or do again as soon as the subscription has been made again.
inline bool eventsCome(Initiator &initiator, Peer const &peer, milliseconds limit = patience,
                       char const *event = "again") {
    live_blocks::Unnoticed const unnoticed;
    EXPECT_EQ(initiator.registerForEvents(), done);
    auto const end = processes::Clock::now() + limit;
    bool came = false;
    while (!came && processes::Clock::now() < end) {
        (void)peer.publish(event);
        came = initiator.waitForEvent(event, milliseconds(20));
    }
    return came;
}
inline void expectEvents(Initiator &initiator, Peer const &peer) {
    EXPECT_TRUE(eventsCome(initiator, peer)) << "no events afterwards";
}
/// Who is subscribed finds also services that are not there yet.
inline void expectToFindLaterServices(Initiator &initiator) {
    // One may be found because it is looked for just then; it stays, since that is also done when one goes.
    Peer const second(Peer::Memory::safe, "second");
    EXPECT_TRUE(eventsCome(initiator, second, patience, "second")) << "the second service is not found";
    Peer const third(Peer::Memory::safe, "third");
    EXPECT_TRUE(eventsCome(initiator, third, patience, "third")) << "the third service is not found";
}

}  // namespace torture

#endif
