// SPDX-License-Identifier: Apache-2.0
// nng: requests and replies over its ipc transport. One request at a time: a socket of this pattern cancels the
// outstanding one when the next is sent.

// First: the headers of the protocols do not include what they need.
#include "peers/nng_support.h"

#include <nng/protocol/reqrep0/rep.h>
#include <nng/protocol/reqrep0/req.h>

#include "peers/transport.h"

namespace {

class NngConnection : public Connection {
  public:
    explicit NngConnection(std::string const &path) { requester_.connect(path); }

    void send(std::string_view message) override { requester_.send(message); }
    std::string_view receive() override { return message_.receive(requester_); }

  private:
    NngSocket requester_{nng_req0_open};
    NngMessage message_;
};

class NngTransport : public Transport {
  public:
    void serve(std::string const &path, std::function<void()> const &ready,
               std::function<Answer()> const &make_answer) const override {
        NngSocket replier(nng_rep0_open);
        replier.listen(path);
        ready();
        Answer const answer = make_answer();
        NngMessage request;
        for (;;) {
            replier.send(answer(request.receive(replier)));
        }
    }

    std::unique_ptr<Connection> connect(std::string const &path) const override {
        return std::make_unique<NngConnection>(path);
    }
};

}  // namespace

std::unique_ptr<Transport> makeNngTransport() {
    return std::make_unique<NngTransport>();
}
