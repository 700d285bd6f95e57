// SPDX-License-Identifier: Apache-2.0
#include "support/peer.h"

#include <optional>
#include <stdexcept>
#include <utility>

#include "live_blocks/live_blocks.h"

namespace torture {

namespace {

/// Nothing of what is done meanwhile fails, where that is wanted.
class Safely {
  public:
    explicit Safely(Peer::Memory memory) {
        if (memory == Peer::Memory::safe) {
            unnoticed_.emplace();
        }
    }

  private:
    std::optional<live_blocks::Unnoticed> unnoticed_;
};

}  // namespace

Peer::Peer(Memory memory, char const *target) : memory_(memory), target_(target) {
    open();
}

Peer::~Peer() {
    close();
}

void Peer::open() {
    Safely const safely(memory_);
    if (korvo_core_ipc_target_init(nullptr, service, target_, "torture", &handle_) !=
            KORVO_CORE_STATUS_NO_ERROR ||
        korvo_core_ipc_target_command_receive_callback(handle_, take, this) != KORVO_CORE_STATUS_NO_ERROR) {
        if (handle_ != nullptr) {
            (void)korvo_core_ipc_deinit(std::exchange(handle_, nullptr));
        }
        throw std::runtime_error("no service");
    }
}

void Peer::close() {
    Safely const safely(memory_);
    if (handle_ != nullptr) {
        (void)korvo_core_ipc_deinit(handle_);
        handle_ = nullptr;
    }
}

korvo_core_status Peer::publish(std::string const &event) const {
    Safely const safely(memory_);
    return korvo_core_ipc_target_event_send(handle_, event.c_str());
}

void Peer::take(char **source, char **request_id, char **command, void *context) {
    auto &self = *static_cast<Peer *>(context);
    ++self.commands_;
    if (!self.is_silent_) {
        (void)korvo_core_ipc_target_response_send(self.handle_, *source, *request_id, *command);
    }
}

}  // namespace torture
