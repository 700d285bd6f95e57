// SPDX-License-Identifier: Apache-2.0
// nng: publish and subscribe.

// First: the headers of the protocols do not include what they need.
#include "peers/nng_support.h"

#include <nng/protocol/pubsub0/pub.h>
#include <nng/protocol/pubsub0/sub.h>

#include <condition_variable>
#include <mutex>

#include "peers/encoding.h"
#include "peers/peers.h"

namespace {

/// What either side holds for a slow reader: more than a burst, so that nothing is dropped.
constexpr int queue = 2048;

class NngPublisher : public Publisher {
  public:
    NngPublisher(std::string const &path, JsonLibrary const &json) : encoding_(json.encoding()) {
        nngRequire(nng_socket_set_int(socket_.get(), NNG_OPT_SENDBUF, queue), "queue");
        nngRequire(nng_pipe_notify(socket_.get(), NNG_PIPE_EV_ADD_POST, countSubscriber, this), "notify");
        socket_.listen(path);
    }

    void waitFor(int subscribers) override {
        std::unique_lock<std::mutex> lock(mutex_);
        come_.wait(lock, [&] { return subscribers_ >= subscribers; });
    }

    void publish() override { socket_.send(encoding_->event()); }

  private:
    static void countSubscriber(nng_pipe, nng_pipe_ev, void *context) {
        auto &self = *static_cast<NngPublisher *>(context);
        std::lock_guard<std::mutex> const lock(self.mutex_);
        ++self.subscribers_;
        self.come_.notify_one();
    }

    // Before the socket, whose threads use them.
    std::mutex mutex_;
    std::condition_variable come_;
    int subscribers_ = 0;
    NngSocket socket_{nng_pub0_open};
    std::unique_ptr<Encoding> encoding_;
};

class NngSubscriber : public Subscriber {
  public:
    NngSubscriber(std::string const &path, JsonLibrary const &json) : encoding_(json.encoding()) {
        nngRequire(nng_socket_set_int(socket_.get(), NNG_OPT_RECVBUF, queue), "queue");
        nngRequire(nng_socket_set(socket_.get(), NNG_OPT_SUB_SUBSCRIBE, "", 0), "subscribe");
        socket_.connect(path);
    }

    void receive(Event &event) override { encoding_->readEvent(message_.receive(socket_), event); }

  private:
    NngSocket socket_{nng_sub0_open};
    NngMessage message_;
    std::unique_ptr<Encoding> encoding_;
};

class NngEventPeer : public EventPeer {
  public:
    std::string name() const override { return "nng"; }
    std::unique_ptr<Publisher> publisher(std::string const &path) const override {
        return std::make_unique<NngPublisher>(path, fastestJson());
    }
    std::unique_ptr<Subscriber> subscribe(std::string const &path) const override {
        return std::make_unique<NngSubscriber>(path, fastestJson());
    }
};

}  // namespace

std::unique_ptr<EventPeer> makeNngEventPeer() {
    return std::make_unique<NngEventPeer>();
}
