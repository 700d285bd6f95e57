// SPDX-License-Identifier: Apache-2.0
#include "peers/message_peer.h"

#include <cstdio>
#include <stdexcept>

namespace {

class MessageCaller : public Caller {
  public:
    MessageCaller(std::unique_ptr<Connection> connection, std::unique_ptr<Encoding> encoding)
        : connection_(std::move(connection)), encoding_(std::move(encoding)) {}

    void getRelay(Relay &relay) override {
        send(encoding_->relayCommand(contents::action_id));
        encoding_->readRelay(receive(), relay);
    }

    void getLists(Lists &lists) override {
        send(encoding_->listsCommand());
        encoding_->readLists(receive(), lists);
    }

    void flight(int calls) override {
        for (int call = 0; call < calls; ++call) {
            send(encoding_->relayCommand(contents::action_id));
        }
        for (int call = 0; call < calls; ++call) {
            Relay relay;
            encoding_->readRelay(receive(), relay);
            relay.check();
        }
    }

  private:
    void send(std::string_view command) {
        char id[request_id_size + 1];
        std::snprintf(id, sizeof id, "%036u", ++last_sent_);
        message_.assign(id, request_id_size).append(command);
        connection_->send(message_);
    }

    std::string_view receive() {
        std::string_view const message = connection_->receive();
        char id[request_id_size + 1];
        std::snprintf(id, sizeof id, "%036u", ++last_received_);
        if (message.substr(0, request_id_size) != id) {
            throw std::runtime_error("a response to another request");
        }
        return message.substr(request_id_size);
    }

    std::unique_ptr<Connection> connection_;
    std::unique_ptr<Encoding> encoding_;
    std::string message_;
    unsigned int last_sent_ = 0;
    unsigned int last_received_ = 0;
};

}  // namespace

void MessagePeer::serve(std::string const &path, std::function<void()> const &ready) const {
    transport_->serve(path, ready, [this]() -> Answer {
        std::shared_ptr<Encoding> const encoding = json_.encoding();
        return [encoding, message = std::string()](std::string_view request) mutable -> std::string_view {
            message.assign(request.substr(0, request_id_size));
            message.append(encoding->answer(request.substr(request_id_size)));
            return message;
        };
    });
}

std::unique_ptr<Caller> MessagePeer::connect(std::string const &path) const {
    return std::make_unique<MessageCaller>(transport_->connect(path), json_.encoding());
}
