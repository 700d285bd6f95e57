// SPDX-License-Identifier: Apache-2.0
// gRPC: unary calls over a Unix socket, a completion queue and one thread of ours on each side. By its generic interface,
// which takes bytes, so that its code generator and Protocol Buffers' stay out of the build.

#include <grpcpp/generic/async_generic_service.h>
#include <grpcpp/generic/generic_stub.h>
#include <grpcpp/grpcpp.h>

#include <deque>
#include <stdexcept>

#include "peers/transport.h"

namespace {

constexpr char const *method = "/bench.Peer/Call";

void require(bool good, char const *what) {
    if (!good) {
        throw std::runtime_error(std::string("gRPC: ") + what);
    }
}

grpc::ByteBuffer bufferOf(std::string_view bytes) {
    grpc::Slice const slice(bytes.data(), bytes.size());
    return grpc::ByteBuffer(&slice, 1);
}

/// One piece, as such small messages come.
grpc::Slice bytesOf(grpc::ByteBuffer const &buffer) {
    grpc::Slice slice;
    require(buffer.DumpToSingleSlice(&slice).ok(), "a message");
    return slice;
}

std::string_view viewOf(grpc::Slice const &slice) {
    return {reinterpret_cast<char const *>(slice.begin()), slice.size()};
}

class GrpcConnection : public Connection {
  public:
    explicit GrpcConnection(std::string const &path)
        : stub_(grpc::CreateChannel("unix:" + path, grpc::InsecureChannelCredentials())) {}

    ~GrpcConnection() override {
        queue_.Shutdown();
        void *tag = nullptr;
        bool good = false;
        while (queue_.Next(&tag, &good)) {
        }
    }

    void send(std::string_view message) override {
        Call &call = calls_.emplace_back();
        call.reader = stub_.PrepareUnaryCall(&call.context, method, bufferOf(message), &queue_);
        call.reader->StartCall();
        call.reader->Finish(&call.response, &call.status, &call);
    }

    /// The answer to the oldest request; others may be there before it.
    std::string_view receive() override {
        while (!calls_.front().is_done) {
            void *tag = nullptr;
            bool good = false;
            require(queue_.Next(&tag, &good) && good, "the queue ended");
            static_cast<Call *>(tag)->is_done = true;
        }
        require(calls_.front().status.ok(), "a call failed");
        received_ = bytesOf(calls_.front().response);
        calls_.pop_front();
        return viewOf(received_);
    }

  private:
    struct Call {
        grpc::ClientContext context;
        grpc::ByteBuffer response;
        grpc::Status status;
        std::unique_ptr<grpc::GenericClientAsyncResponseReader> reader;
        bool is_done = false;
    };

    grpc::GenericStub stub_;
    grpc::CompletionQueue queue_;
    // Whose elements stay where they are.
    std::deque<Call> calls_;
    grpc::Slice received_;
};

/// One call at the service, from being asked for to its end.
class ServedCall {
  public:
    ServedCall(grpc::AsyncGenericService &service, grpc::ServerCompletionQueue &queue)
        : service_(service), queue_(queue), stream_(&context_) {
        service_.RequestCall(&context_, &stream_, &queue_, &queue_, this);
    }

    /// What it waited for has happened, or cannot happen any more.
    void goOn(bool good, Answer const &answer) {
        if (!good || step_ == Step::answering) {
            delete this;
            return;
        }
        if (step_ == Step::waiting) {
            new ServedCall(service_, queue_);
            step_ = Step::reading;
            stream_.Read(&request_, this);
            return;
        }
        step_ = Step::answering;
        grpc::Slice const request = bytesOf(request_);
        stream_.WriteAndFinish(bufferOf(answer(viewOf(request))), {}, grpc::Status::OK, this);
    }

  private:
    enum class Step { waiting, reading, answering };

    grpc::AsyncGenericService &service_;
    grpc::ServerCompletionQueue &queue_;
    grpc::GenericServerContext context_;
    grpc::GenericServerAsyncReaderWriter stream_;
    grpc::ByteBuffer request_;
    Step step_ = Step::waiting;
};

class GrpcTransport : public Transport {
  public:
    void serve(std::string const &path, std::function<void()> const &ready,
               std::function<Answer()> const &make_answer) const override {
        grpc::AsyncGenericService service;
        grpc::ServerBuilder builder;
        builder.AddListeningPort("unix:" + path, grpc::InsecureServerCredentials());
        builder.RegisterAsyncGenericService(&service);
        std::unique_ptr<grpc::ServerCompletionQueue> const queue = builder.AddCompletionQueue();
        std::unique_ptr<grpc::Server> const server = builder.BuildAndStart();
        require(server != nullptr, "the server did not start");
        Answer const answer = make_answer();
        new ServedCall(service, *queue);
        ready();
        void *tag = nullptr;
        for (bool good = false; queue->Next(&tag, &good);) {
            static_cast<ServedCall *>(tag)->goOn(good, answer);
        }
    }

    std::unique_ptr<Connection> connect(std::string const &path) const override {
        return std::make_unique<GrpcConnection>(path);
    }
};

}  // namespace

std::unique_ptr<Transport> makeGrpcTransport() {
    return std::make_unique<GrpcTransport>();
}
