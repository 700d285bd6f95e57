// SPDX-License-Identifier: Apache-2.0
// Calls, cancelling and the end of engines by many threads at once, against a service of this process. So many rounds as
// KORVO_STRESS_ROUNDS says.
#include <atomic>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>

#include "cpp_layer/support/engine_test.h"

namespace cpp_layer {
namespace {

int rounds() {
    char const *const wanted = std::getenv("KORVO_STRESS_ROUNDS");
    return wanted != nullptr ? std::atoi(wanted) : 200;
}

/// Answers some commands at once, some never.
class Service {
  public:
    Service() {
        fake_platform::reset();
        (void)korvo_core_ipc_target_init(nullptr, "action_engine", "camera-1", "camera-1", &target_);
        (void)korvo_core_ipc_target_command_receive_callback(target_, answer, this);
    }
    ~Service() { (void)korvo_core_ipc_deinit(target_); }

    void *target() const { return target_; }

  private:
    static void answer(char **source, char **request_id, char **command, void *context) {
        auto &service = *static_cast<Service *>(context);
        if (service.commands_++ % 3 != 0) {
            (void)korvo_core_ipc_target_response_send(service.target_, *source, *request_id,
                                                      "{\"command\": \"Get_actions\", \"status\": 0, "
                                                      "\"action_id\": [1, 2], \"action_type\": [3, 4]}");
        }
        std::free(*source);
        std::free(*request_id);
        std::free(*command);
        *source = *request_id = *command = nullptr;
    }

    void *target_ = nullptr;
    std::atomic<unsigned int> commands_{0};
};

/// What a thread does with an engine that others use too: a bit of everything.
void useEngine(korvo::ActionEngine const &engine, unsigned int seed, std::atomic<int> &ended) {
    std::minstd_rand random(seed);
    std::vector<korvo::PendingCall> calls;
    std::vector<std::future<Actions>> futures;
    for (int n = 0; n < 8; ++n) {
        switch (random() % 6) {
            case 0:
                futures.push_back(engine.get_actions_future(milliseconds(1 + random() % 20)));
                break;
            case 1:
                calls.push_back(engine.get_actions_async([&ended](Actions const &) { ++ended; },
                                                         milliseconds(1 + random() % 20)));
                break;
            case 2:
                if (!calls.empty()) {
                    calls.pop_back();
                }
                break;
            case 3:
                engine.get_actions_async([&ended](Actions const &) { ++ended; }).detach();
                break;
            case 4:
                (void)engine.on_action_completed([](auto const &) {});
                break;
            default:
                (void)engine.get_actions(milliseconds(1));
        }
    }
    for (auto &future : futures) {
        (void)future.get();
    }
}

TEST(Threads, UseAnEngineInEveryWayUntilItEnds) {
    Service const service;
    for (int round = 0; round < rounds(); ++round) {
        std::atomic<int> ended{0};
        korvo::Options options;
        options.target = "camera-1";
        // Nobody waits long for the third that is not answered.
        options.timeout = milliseconds(20);
        auto engine = std::make_unique<korvo::ActionEngine>(korvo::ActionEngine::open(options).value());
        std::thread users[3];
        unsigned int seed = static_cast<unsigned int>(round) * 10;
        for (std::thread &user : users) {
            user = std::thread([&engine, &ended, mine = ++seed] { useEngine(*engine, mine, ended); });
        }
        for (std::thread &user : users) {
            user.join();
        }
        // Whatever is still under way: from this thread, or from a callable of its own.
        if (round % 2 == 0) {
            Signal done;
            engine
                ->get_actions_async(
                    [&](Actions const &) {
                        engine.reset();
                        done.give();
                    },
                    milliseconds(5))
                .detach();
            ASSERT_TRUE(done.wait());
        } else {
            engine.reset();
        }
        int const afterwards = ended;
        std::this_thread::yield();
        ASSERT_EQ(ended, afterwards);
    }
}

TEST(Threads, CancelWhatOthersAreAbout) {
    Service const service;
    korvo::Options options;
    options.target = "camera-1";
    korvo::ActionEngine const engine = korvo::ActionEngine::open(options).value();
    for (int round = 0; round < rounds(); ++round) {
        auto const is_cancelled = std::make_shared<std::atomic<bool>>(false);
        std::atomic<bool> ran_late{false};
        auto call = engine.get_actions_async(
            [is_cancelled, &ran_late](Actions const &) { ran_late = ran_late || *is_cancelled; },
            milliseconds(1 + round % 3));
        for (int n = 0; n < round % 7; ++n) {
            std::this_thread::yield();
        }
        call.cancel();
        *is_cancelled = true;
        ASSERT_EQ(is_cancelled.use_count(), 1);
        ASSERT_FALSE(ran_late);
    }
}

}  // namespace
}  // namespace cpp_layer
