// SPDX-License-Identifier: Apache-2.0
// Every operation in every form on the real platform, while memory runs out at each of its places in turn.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "support/client.h"
#include "support/operation.h"
#include "support/rounds.h"
#include "support/samples.h"
#include "support/service.h"
#include "support/workspace.h"

namespace torture {

namespace {

using namespace end_to_end;

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;

/// What memory that has run out ends a call with: 2 in the platform and for lists, 4 elsewhere in the client library.
bool isShortage(korvo_core_status status, bool gives_lists) {
    Culprits const guilty = culprits();
    switch (status) {
        case KORVO_CORE_STATUS_ALLOC_FAILED:
            return guilty.platform || gives_lists || guilty.unknown;
        case KORVO_CORE_STATUS_IPC_FAILED:
            return guilty.client || guilty.thread_start || guilty.unknown;
        default:
            return false;
    }
}

/// The context of an asynchronous call. Nothing of its own fails or is recorded.
class QuietAnswer : public Receiver {
  public:
    void entered() override { unnoticed_.emplace(); }
    void called(char const *, korvo_core_status status, Values results, int) override {
        std::lock_guard<std::mutex> const lock(mutex_);
        ++count_;
        answer_ = Answer{status, status == done ? std::move(results) : Values()};
        // Who waits may end this object as soon as the mutex is free.
        unnoticed_.reset();
        changed_.notify_all();
    }

    /// Waits for the callback, or until `is_over`.
    template <typename IsOver>
    bool wait(milliseconds limit, IsOver const &is_over) {
        std::unique_lock<std::mutex> lock(mutex_);
        auto const end = Clock::now() + limit;
        while (count_ == 0 && !is_over() && Clock::now() < end) {
            (void)changed_.wait_for(lock, milliseconds(1));
        }
        return count_ != 0;
    }
    bool wait() {
        return wait(patience, [] { return false; });
    }
    std::size_t count() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return count_;
    }
    Answer const &answer() const { return answer_; }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t count_ = 0;
    Answer answer_;
    std::optional<live_blocks::Unnoticed> unnoticed_;
};

/// The service, with an entry of each kind for the operations to work on.
class World {
  public:
    World() {
        openLog();
        service_ = std::make_unique<Service>(std::vector<std::string>{"--lenient"});
        client_ = std::make_unique<Client>();
        for (auto const &[name, operation] : operations()) {
            if (name.rfind("create_", 0) == 0 && name != "create_association") {
                ids_[name.substr(7)] = std::get<Number>(
                    operation
                        ->send(client_->handle(), nullptr, sampleOf(operation->inputs(), Flavour::plain, 1))
                        .results.at(0));
            }
        }
        EXPECT_EQ(operation("create_association")
                      .send(client_->handle(), nullptr, inputsOf("create_association"))
                      .status,
                  done);
    }

    /// Inputs with which an operation does the same each time.
    Values inputsOf(std::string const &name) const {
        auto const &kinds = operation(name).inputs();
        Values values = sampleOf(kinds, Flavour::plain, 2);
        if (name.rfind("delete_", 0) == 0) {
            // Nothing has this one.
            values[0] = Number{4'000'000'000U};
        } else if (name == "create_association") {
            values = {idOf("timer_trigger"), idOf("wiper_action")};
        } else if (name == "get_trigger_associations" || name == "get_trigger_type") {
            values[0] = idOf("timer_trigger");
        } else if (name == "get_action_associations" || name == "get_action_type" ||
                   name == "get_action_filters" || name == "set_action_filters") {
            values[0] = idOf("wiper_action");
        } else if (name.rfind("get_", 0) == 0 && !values.empty()) {
            values[0] = idOf(name.substr(4));
        } else if (name.rfind("modify_", 0) == 0) {
            values[0] = idOf(name.substr(7));
        }
        return values;
    }

    /// Deletes what rounds have created.
    void tidy() const {
        for (std::string const family : {"action", "trigger"}) {
            Answer const all = operation("get_" + family + "s").send(client_->handle(), nullptr, {});
            for (unsigned int const id : std::get<Numbers>(all.results.at(0))) {
                if (std::none_of(ids_.begin(), ids_.end(),
                                 [&](auto const &known) { return known.second == id; })) {
                    EXPECT_EQ(operation("delete_" + family).send(client_->handle(), nullptr, {id}).status,
                              done);
                }
            }
        }
    }

    Answer ask(std::string const &name) const {
        return operation(name).send(client_->handle(), nullptr, inputsOf(name));
    }

  private:
    Number idOf(std::string const &kind) const { return ids_.at(kind); }

    std::unique_ptr<Service> service_;
    std::unique_ptr<Client> client_;
    std::map<std::string, unsigned int> ids_;
};

/// The handle serves further calls, in the caller's thread and by callbacks.
void expectUsable(Client const &client) {
    live_blocks::Unnoticed const unnoticed;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
    QuietAnswer again;
    EXPECT_EQ(operation("get_triggers").sendAsync(client.handle(), nullptr, {}, again), done);
    EXPECT_TRUE(again.wait()) << "no callback afterwards";
    EXPECT_EQ(again.answer().status, done);
}

class EveryOperation : public ::testing::TestWithParam<std::string> {
  protected:
    static void SetUpTestSuite() { world = new World; }
    static void TearDownTestSuite() {
        delete world;
        world = nullptr;
    }
    void SetUp() override {
        expected_ = world->ask(GetParam());
        EXPECT_EQ(expected_.status,
                  GetParam().rfind("delete_", 0) == 0 ? KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE : done);
        inputs_ = world->inputsOf(GetParam());
        tells_the_same_ = GetParam().rfind("create_", 0) != 0;
    }
    void TearDown() override {
        if (world != nullptr) {
            world->tidy();
        }
    }

    Operation const &tested() const { return operation(GetParam()); }

    void expectAnswer(Fault const &fault, korvo_core_status status, Outs const &outs) const {
        if (status == done && expected_.status == done && tells_the_same_) {
            EXPECT_TRUE(outs.values() == expected_.results);
        }
        expectStatus(fault, status);
    }
    void expectStatus(Fault const &fault, korvo_core_status status) const {
        EXPECT_TRUE(status == expected_.status || (fault.failed() != 0 && isShortage(status, givesLists())))
            << status;
    }

    bool givesLists() const {
        auto const &kinds = tested().results();
        return std::any_of(kinds.begin(), kinds.end(), [](auto const &result) {
            return result == Kind::numbers || result == Kind::texts;
        });
    }

    /// Texts before the one that memory ran out for: the callback would own them, and is not called.
    Leavings textsOfResults() const {
        Leavings sizes;
        for (Value const &value : expected_.results) {
            if (auto const *const text = std::get_if<Text>(&value)) {
                sizes.push_back(text->size() + 1);
            }
        }
        return sizes;
    }

    static World *world;
    Answer expected_;
    Values inputs_;
    bool tells_the_same_ = true;
};

World *EveryOperation::world = nullptr;

std::vector<std::string> names() {
    std::vector<std::string> all;
    for (auto const &[name, operation] : operations()) {
        all.push_back(name);
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(, EveryOperation, ::testing::ValuesIn(names()),
                         [](auto const &tested) { return tested.param; });

TEST(Opening, GivesTwoOrAHandleThatWorks) {
    openLog();
    Service const service;
    for (bool const events : {false, true}) {
        failEveryAllocation(events ? "opening with events" : "opening", [&](Fault &fault) {
            void *handle = nullptr;
            fault.start();
            korvo_core_status const status =
                korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, events ? 1 : 0, "torture");
            fault.stop();
            EXPECT_EQ(status == done, handle != nullptr);
            EXPECT_TRUE(status == done || (fault.failed() != 0 && status == KORVO_CORE_STATUS_ALLOC_FAILED))
                << status;
            if (status == done) {
                EXPECT_EQ(operation("get_actions").send(handle, nullptr, {}).status, done);
                korvo_api_action_engine_initiator_deinit(handle);
            }
        });
    }
}

TEST_P(EveryOperation, SynchronouslyEndsInAStatusAndTheHandleWorksOn) {
    failEveryAllocation(GetParam() + " at once", [&](Fault &fault) {
        Client const client;
        Inputs const inputs(inputs_);
        Outs outs(tested().results());
        fault.start();
        korvo_core_status const status = tested().send(client.handle(), nullptr, inputs, outs);
        fault.stop();
        expectAnswer(fault, status, outs);
        expectUsable(client);
    });
}

TEST_P(EveryOperation, InTwoStepsEndsInAStatusAndTheHandleWorksOn) {
    failEveryAllocation(GetParam() + " in two steps", [&](Fault &fault) {
        Client const client;
        Inputs const inputs(inputs_);
        Outs outs(tested().results());
        char *request_id = nullptr;
        fault.start();
        korvo_core_status status = tested().nonBlockingSend(client.handle(), nullptr, &request_id, inputs);
        if (status == done) {
            status = tested().receiveWithTimeout(client.handle(), nullptr, long_timeout_ms, request_id, outs);
        } else {
            EXPECT_TRUE(isShortage(status, givesLists())) << status;
        }
        fault.stop();
        expectAnswer(fault, status, outs);
        if (status != done) {
            korvo_api_action_engine_free_uuid(request_id);
        }
        expectUsable(client);
    });
}

TEST_P(EveryOperation, AsynchronouslyCallsBackAtMostOnceAndTheHandleWorksOn) {
    auto const round = [&](Fault &fault) {
        QuietAnswer answer;
        Client const client;
        Inputs const inputs(inputs_);
        fault.start();
        korvo_core_status const status =
            tested().sendAsync(client.handle(), nullptr, inputs, Callback::first, &answer);
        if (status == done) {
            (void)answer.wait(fault.isForEver() ? milliseconds(20) : patience,
                              [&] { return fault.isOver(); });
        }
        fault.stop();
        // Responses come in the order of the commands: behind these one that comes does not come any more.
        expectUsable(client);
        EXPECT_LE(answer.count(), status == done && fault.failed() == 0 ? 1U : 1U);
        if (fault.failed() == 0) {
            EXPECT_EQ(status, done);
            EXPECT_EQ(answer.count(), 1U);
        }
        if (status != done) {
            EXPECT_TRUE(isShortage(status, givesLists())) << status;
            EXPECT_EQ(answer.count(), 0U) << "a call that was refused has called back";
        } else if (answer.count() != 0) {
            korvo_core_status const called = answer.answer().status;
            // That of the substitute, where the platform has had no memory for the response.
            EXPECT_TRUE(called == expected_.status ||
                        (fault.failed() != 0 && (called == KORVO_CORE_STATUS_IPC_FAILED ||
                                                 (givesLists() && called == KORVO_CORE_STATUS_ALLOC_FAILED))))
                << called;
            if (answer.answer().status == done && tells_the_same_) {
                EXPECT_TRUE(answer.answer().results == expected_.results);
            }
        }
    };
    failEveryAllocation(GetParam() + " asynchronously", round, textsOfResults());
}

}  // namespace

}  // namespace torture
