// SPDX-License-Identifier: Apache-2.0
#include "support/peer.h"

#include <stdexcept>

#include "live_blocks/live_blocks.h"

namespace torture {

Peer::Peer() {
    open();
}

Peer::~Peer() {
    close();
}

void Peer::open() {
    live_blocks::Unnoticed const unnoticed;
    if (korvo_core_ipc_target_init(nullptr, service, "", "torture", &handle_) != KORVO_CORE_STATUS_NO_ERROR ||
        korvo_core_ipc_target_command_receive_callback(handle_, take, this) != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error("no service");
    }
}

void Peer::close() {
    live_blocks::Unnoticed const unnoticed;
    if (handle_ != nullptr) {
        (void)korvo_core_ipc_deinit(handle_);
        handle_ = nullptr;
    }
}

void Peer::publish(std::string const &event) const {
    live_blocks::Unnoticed const unnoticed;
    (void)korvo_core_ipc_target_event_send(handle_, event.c_str());
}

void Peer::take(char **source, char **request_id, char **command, void *context) {
    auto &self = *static_cast<Peer *>(context);
    ++self.commands_;
    if (!self.is_silent_) {
        (void)korvo_core_ipc_target_response_send(self.handle_, *source, *request_id, *command);
    }
}

}  // namespace torture
