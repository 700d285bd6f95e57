// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_LAYER_QUEUE_H
#define KORVO_LUA_LAYER_QUEUE_H

// What waits until a script asks for it: events and answers. Threads of the messaging put in, the script's thread takes
// out, and no Lua state is touched by any other.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "korvo/detail/call.hpp"
#include "operations/operation.h"

namespace korvo::lua_layer {

using operations::Kind;

/// An input or a result of any kind, with what a C list of it points to.
struct Value {
    unsigned int number = 0;
    std::string text = {};
    std::vector<std::string> texts = {};
    std::vector<unsigned int> numbers = {};
    std::vector<char *> text_pointers = {};
    std::vector<unsigned int *> number_pointers = {};
};
using Values = std::vector<Value>;

/// Rings for all queues of the process, so that one thread can wait for several. Its mutex guards them all.
struct Bell {
    std::mutex mutex;
    std::condition_variable rings;
    std::uint64_t count = 0;
};
Bell &bell();

struct Event {
    ActionCompleted what;
    double dropped;  // how many were dropped before it
};

class Queue {
  public:
    explicit Queue(std::size_t most_events);
    ~Queue();
    Queue(Queue const &) = delete;
    Queue &operator=(Queue const &) = delete;

    /// Readable as long as something can be taken; -1 when the system has none left.
    int descriptor() const noexcept { return descriptor_; }

    void putEvent(ActionCompleted const &event) noexcept;
    /// NULL when there is none.
    std::unique_ptr<Event> takeEvent() noexcept;
    /// Nothing will come any more. Who waits for an event is woken.
    void closed() noexcept;
    /// Since the queue was made.
    double dropped() const noexcept;

    // Under the bell's mutex: an answer came, or was taken.
    void answerCame() noexcept;
    void answerGone() noexcept;

  private:
    void show() noexcept;

    std::size_t const most_events_;
    int const descriptor_;
    bool is_readable_ = false;
    std::deque<std::unique_ptr<Event>> events_;
    std::size_t answers_ = 0;
    double dropped_ = 0;
    double dropped_before_next_ = 0;
};

/// A call whose answer stays with it until it is taken.
class QueuedCall final : public detail::TypedCall<Values> {
  public:
    QueuedCall(char const *name, std::shared_ptr<Queue> queue) noexcept
        : TypedCall(name), queue_(std::move(queue)) {}

    bool runsCallable() const noexcept override { return false; }
    void settle(Result<Values> &&result) noexcept override;
    void endWithEngine(Failure const &failure) noexcept override { fail(failure); }
    void run() override {}
    void discard() noexcept override {}

    /// The answer, which stays the call's; NULL when there is none yet, or it was taken.
    Result<Values> *take() noexcept;
    bool isAnswered() const noexcept;
    /// Nobody will take the answer. Who waits for it is woken.
    void abandon() noexcept;

  private:
    std::shared_ptr<Queue> queue_;
    std::optional<Result<Values>> answer_;
    bool is_over_ = false;  // taken or abandoned
};

}  // namespace korvo::lua_layer

#endif
