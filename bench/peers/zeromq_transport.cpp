// SPDX-License-Identifier: Apache-2.0
// ZeroMQ: a router that answers dealers, over its ipc transport.

#include "peers/transport.h"
#include "peers/zeromq.h"

namespace {

class ZeroMqConnection : public Connection {
  public:
    explicit ZeroMqConnection(std::string const &path) { dealer_.connect(path); }

    void send(std::string_view message) override { dealer_.send(message); }
    std::string_view receive() override { return message_.receive(dealer_); }

  private:
    ZmqSocket dealer_{ZMQ_DEALER};
    ZmqMessage message_;
};

class ZeroMqTransport : public Transport {
  public:
    void serve(std::string const &path, std::function<void()> const &ready,
               std::function<Answer()> const &make_answer) const override {
        ZmqSocket router(ZMQ_ROUTER);
        router.bind(path);
        ready();
        Answer const answer = make_answer();
        ZmqMessage client;
        ZmqMessage request;
        for (;;) {
            std::string_view const from = client.receive(router);
            std::string_view const response = answer(request.receive(router));
            router.send(from, ZMQ_SNDMORE);
            router.send(response);
        }
    }

    std::unique_ptr<Connection> connect(std::string const &path) const override {
        return std::make_unique<ZeroMqConnection>(path);
    }
};

}  // namespace

std::unique_ptr<Transport> makeZeroMqTransport() {
    return std::make_unique<ZeroMqTransport>();
}
