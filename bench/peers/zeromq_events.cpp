// SPDX-License-Identifier: Apache-2.0
// ZeroMQ: publish and subscribe.

#include "peers/encoding.h"
#include "peers/peers.h"
#include "peers/zeromq.h"

namespace {

class ZeroMqPublisher : public Publisher {
  public:
    ZeroMqPublisher(std::string const &path, JsonLibrary const &json) : encoding_(json.encoding()) {
        socket_.set(ZMQ_XPUB_VERBOSE, 1);
        socket_.bind(path);
    }

    void waitFor(int subscribers) override {
        ZmqMessage subscription;
        for (int count = 0; count < subscribers; ++count) {
            (void)subscription.receive(socket_);
        }
    }

    void publish() override { socket_.send(encoding_->event()); }

  private:
    // As the plain publishing socket, and it tells who has subscribed.
    ZmqSocket socket_{ZMQ_XPUB};
    std::unique_ptr<Encoding> encoding_;
};

class ZeroMqSubscriber : public Subscriber {
  public:
    ZeroMqSubscriber(std::string const &path, JsonLibrary const &json) : encoding_(json.encoding()) {
        zmqRequire(zmq_setsockopt(socket_.get(), ZMQ_SUBSCRIBE, "", 0) == 0, "subscribe");
        socket_.connect(path);
    }

    void receive(Event &event) override { encoding_->readEvent(message_.receive(socket_), event); }

  private:
    ZmqSocket socket_{ZMQ_SUB};
    ZmqMessage message_;
    std::unique_ptr<Encoding> encoding_;
};

class ZeroMqEventPeer : public EventPeer {
  public:
    std::string name() const override { return "ZeroMQ"; }
    std::unique_ptr<Publisher> publisher(std::string const &path) const override {
        return std::make_unique<ZeroMqPublisher>(path, fastestJson());
    }
    std::unique_ptr<Subscriber> subscribe(std::string const &path) const override {
        return std::make_unique<ZeroMqSubscriber>(path, fastestJson());
    }
};

}  // namespace

std::unique_ptr<EventPeer> makeZeroMqEventPeer() {
    return std::make_unique<ZeroMqEventPeer>();
}
