// SPDX-License-Identifier: Apache-2.0
// The C++ layer over the real messaging: every operation in every form beside the plain functions, and what becomes of
// calls when the service stops or goes.
#include <gtest/gtest.h>

#include <atomic>
#include <korvo/action_engine.hpp>
#include <set>
#include <string>
#include <thread>

#include "cpp_layer/support/operations.h"
#include "support/operation.h"
#include "support/samples.h"
#include "support/service.h"

namespace end_to_end {

namespace {

enum class Form { call, future, async };

korvo::ActionEngine openEngine() {
    return korvo::ActionEngine::open().value();
}

class EveryForm : public ::testing::TestWithParam<Form> {
  protected:
    cpp_layer::Outcome call(std::string const &name, Values const &inputs = {}) {
        called_.insert(name);
        cpp_layer::Operation const &operation = cpp_layer::operations().at(name);
        if (GetParam() == Form::call) {
            return operation.call(engine_, inputs, patience);
        }
        if (GetParam() == Form::future) {
            return operation.future(engine_, inputs, patience)();
        }
        cpp_layer::Outcome told;
        Latch done;
        korvo::PendingCall const pending =
            operation.async(engine_, inputs, patience, [&](cpp_layer::Outcome const &outcome) {
                told = outcome;
                done.open();
            });
        EXPECT_TRUE(done.wait(2 * patience)) << name;
        return told;
    }

    /// The layer gives what the plain function gives.
    Values read(std::string const &name, Values const &inputs = {}) {
        cpp_layer::Outcome const outcome = call(name, inputs);
        EXPECT_EQ(outcome.status, KORVO_CORE_STATUS_NO_ERROR) << outcome.message;
        EXPECT_EQ(outcome.values, operation(name).send(client_.handle(), nullptr, inputs).results) << name;
        return outcome.values;
    }

    void change(std::string const &name, Values const &inputs) { EXPECT_EQ(call(name, inputs).message, ""); }

    unsigned int create(std::string const &name, Values const &inputs) {
        cpp_layer::Outcome const outcome = call("create_" + name, inputs);
        EXPECT_EQ(outcome.message, "");
        return outcome.values.empty() ? 0 : std::get<Number>(outcome.values[0]);
    }

    void createModifyAndDelete(std::string const &name, Flavour flavour) {
        SCOPED_TRACE(name + ", " + nameOf(flavour));
        std::string const family = name.substr(name.rfind('_') + 1);
        auto const &kinds = operation("create_" + name).inputs();
        Values const first = sampleOf(kinds, flavour, 1);
        Values const second = sampleOf(kinds, flavour, 2);
        unsigned int const id = create(name, first);
        EXPECT_EQ(read("get_" + name, {id}), readBack(first));
        read("get_" + family + "_type", {id});
        change("modify_" + name, id + second);
        EXPECT_EQ(read("get_" + name, {id}), readBack(second));
        change("delete_" + family, {id});
        EXPECT_EQ(call("get_" + name, {id}).status, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
    }

    // All kinds of texts and numbers are to come back, also as filters that mean nothing.
    Service service_{{"--lenient"}};
    Client client_;
    korvo::ActionEngine engine_ = openEngine();
    std::set<std::string> called_;
};

INSTANTIATE_TEST_SUITE_P(, EveryForm, ::testing::Values(Form::call, Form::future, Form::async));

TEST_P(EveryForm, ReachesEveryOperationAndAgreesWithThePlainFunctions) {
    for (std::string const kind :
         {"email_action", "ftp_action", "snapshot_action", "ptz_pattern_action", "ptz_preset_action",
          "ptz_tour_action", "ptz_scan_action", "wiper_action", "washer_action", "relay_action",
          "onvif_trigger", "timer_trigger", "stable_onvif_trigger"}) {
        for (Flavour const flavour : all_flavours) {
            createModifyAndDelete(kind, flavour);
        }
    }
    unsigned int const wiper = create("wiper_action", {"wipe"});
    unsigned int const timer = create("timer_trigger", {"never", 0U});
    read("get_actions");
    read("get_action_counts");
    read("get_triggers");
    read("get_trigger_counts");
    for (Flavour const flavour : all_flavours) {
        Values const filters = sampleOf({Kind::numbers, Kind::numbers, Kind::numbers}, flavour, 1);
        change("set_action_filters", wiper + filters);
        EXPECT_EQ(read("get_action_filters", {wiper}), filters);
    }
    change("create_association", {timer, wiper});
    EXPECT_EQ(read("get_trigger_associations", {timer}), (Values{Numbers{wiper}, Numbers{7}}));
    EXPECT_EQ(read("get_action_associations", {wiper}), (Values{Numbers{timer}, Numbers{1}}));
    change("delete_association", {timer, wiper});
    change("onvif_event", {"topic", "<message/>", Texts{"tns1"}, Texts{"urn:topics"}});
    EXPECT_EQ(called_.size(), 54U);
}

TEST(CppLayer, EndsCallsWhenTheServiceGoes) {
    Service service;
    korvo::ActionEngine const engine = openEngine();
    ASSERT_TRUE(engine.get_actions());
    service.pause();
    auto future = engine.get_actions_future(patience);
    service.kill();
    EXPECT_EQ(future.get().status(), KORVO_CORE_STATUS_IPC_FAILED);
}

TEST(CppLayer, EndsSoonWhileTheServiceIsSilent) {
    Service service;
    auto engine = std::make_unique<korvo::ActionEngine>(openEngine());
    auto const subscription = engine->on_action_completed([](korvo::ActionCompleted const &) {}).value();
    ASSERT_TRUE(engine->get_actions());
    service.pause();
    std::vector<std::future<korvo::Result<korvo::ActionType>>> futures;
    for (int n = 0; n < 64; ++n) {
        futures.push_back(engine->get_action_type_future(korvo::ActionId{1}, patience));
    }
    auto const begin = std::chrono::steady_clock::now();
    engine.reset();
    // Far more than the 0.1 s that it may take, for the busiest of machines.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, patience / 2);
    for (auto &future : futures) {
        EXPECT_EQ(future.get().status(), KORVO_CORE_STATUS_IPC_FAILED);
    }
    service.resume();
}

TEST(CppLayer, AnswersEachOfManyCallsOnce) {
    Service const service;
    korvo::ActionEngine const engine = openEngine();
    constexpr int calls = 5000;
    constexpr int at_once = 50;
    std::atomic<int> answered{0};
    for (int n = 0; n < calls; n += at_once) {
        std::vector<std::future<korvo::Result<std::vector<korvo::ActionEntry>>>> futures;
        for (int one = 0; one < at_once; ++one) {
            futures.push_back(engine.get_actions_future(patience));
            engine.get_triggers_async([&](auto const &result) { answered += result ? 1 : 0; }, patience)
                .detach();
        }
        for (auto &future : futures) {
            ASSERT_TRUE(future.get());
        }
    }
    for (int waited = 0; answered < calls && waited < 10'000; ++waited) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(answered, calls);
}

}  // namespace

}  // namespace end_to_end
