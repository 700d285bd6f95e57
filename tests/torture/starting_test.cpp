// SPDX-License-Identifier: Apache-2.0
// The service as a process, while memory runs out at each place of its start, and of its work, in turn: it serves, or it
// ends and says why.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "emulator/emulator.h"
#include "live_blocks/live_blocks.h"
#include "support/failing_service.h"
#include "support/rounds.h"

namespace torture {

namespace {

constexpr char const *create = R"({"command":"Create_washer_action","action_name":"w"})";

bool isDone(std::optional<std::string> const &answer) {
    return answer && answer->find(R"("status":0)") != std::string::npos;
}

/// The answer to a new client; those before it may have met what failed.
std::string answerAfterwards(Caller::Of of, char const *command) {
    for (int tries = 0; tries < 4; ++tries) {
        std::optional<std::string> const answer = Caller(of).ask(command);
        if (isDone(answer)) {
            return *answer;
        }
    }
    ADD_FAILURE() << "nobody is served";
    return "";
}

class ServiceWithoutMemory : public ::testing::Test {
  protected:
    void SetUp() override {
        if (emulator::present) {
            GTEST_SKIP() << "the emulator does not promise that a process of several threads can be forked";
        }
        setenv("KORVO_LOG_LEVEL", "warning", 1);
    }

    /// Starts it once; whether any allocation failed.
    bool start(std::size_t nth, std::size_t count) {
        FailingService service(FailingService::Since::start, nth, count);
        bool const is_ready = service.isReady();
        if (is_ready) {
            service.relent();
            (void)answerAfterwards(Caller::Of::service, create);
        }
        int const exit = is_ready ? service.stop() : service.wait();
        std::string const &said = service.said();
        EXPECT_EQ(exit, is_ready ? 0 : 1) << said;
        if (!is_ready) {
            ++refusals_;
            // The last line is the program's own.
            std::size_t const last = said.rfind("korvo-action-engine-simulator: ");
            EXPECT_NE(last, std::string::npos) << "it does not say why: " << said;
            EXPECT_EQ(said.find('\n', last), said.size() - 1) << said;
        }
        EXPECT_EQ(said.find("bad_alloc"), std::string::npos) << said;
        EXPECT_TRUE(is_ready || service.failed() != 0) << said;
        return service.failed() != 0;
    }

    /// Serves a few callers once; whether any allocation failed. What was answered with 0 holds afterwards. Each second one is told
    /// to end while memory is still short.
    bool serve(std::size_t nth, std::size_t count) {
        FailingService service(FailingService::Since::begin, nth, count);
        if (!service.isReady()) {
            int const exit = service.wait();
            ADD_FAILURE() << "it ended with " << exit << ": " << service.said();
            return false;
        }
        service.begin();
        std::optional<Caller> listener(Caller::Of::service);
        listener->subscribe();
        Caller const control_listener(Caller::Of::control);
        control_listener.subscribe();
        std::optional<Caller> caller;
        std::vector<std::string> created;
        for (Question const &question : questions_) {
            if (!caller || question.of == Caller::Of::control) {
                caller.emplace(question.of);
            }
            std::optional<std::string> const answer =
                caller->ask(question.command, count == live_blocks::for_ever ? &service : nullptr);
            EXPECT_TRUE(isDone(answer) || service.failed() != 0)
                << question.command << ": " << answer.value_or("no answer");
            if (question.kept != nullptr && isDone(answer)) {
                created.emplace_back(question.kept);
            }
            if (!answer || question.of == Caller::Of::control) {
                caller.reset();
            }
        }
        if (nth % 2 == 0) {
            service.relent();
            (void)answerAfterwards(Caller::Of::service, create);
            std::string const kept = answerAfterwards(Caller::Of::control, R"({"command":"Get_catalogue"})");
            for (std::string const &name : created) {
                EXPECT_NE(kept.find(name), std::string::npos) << name << " was created: " << kept;
            }
        }
        EXPECT_EQ(service.stop(), 0) << service.said();
        EXPECT_EQ(service.said().find("bad_alloc"), std::string::npos) << service.said();
        EXPECT_LE(std::count(service.said().begin(), service.said().end(), '\n'), most_lines)
            << service.said();
        return service.failed() != 0;
    }

    std::size_t refusals_ = 0;

  private:
    struct Question {
        Caller::Of of;
        char const *command;
        /// What is there when this was done.
        char const *kept = nullptr;
    };

    /// More than all that the questions below have to tell.
    static constexpr long most_lines = 40;

    std::vector<Question> const questions_ = {
        {Caller::Of::service, R"({"command":"Create_wiper_action","action_name":"first"})", "first"},
        {Caller::Of::service, R"({"command":"Create_wiper_action","action_name":"second"})", "second"},
        {Caller::Of::service,
         R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":"","topic_filter_dialect":"",)"
         R"("content_filter":"","namespace_keys":[],"namespace_uris":[]})"},
        {Caller::Of::service, R"({"command":"Create_association","trigger_id":1,"action_id":1})"},
        {Caller::Of::service,
         R"({"command":"Onvif_event","topic":"door","message":"<m/>","namespace_keys":[],"namespace_uris":[]})"},
        {Caller::Of::control, R"({"command":"Add_fault","method":"Get_triggers","delay_ms":1,"count":1})"},
        {Caller::Of::service, R"({"command":"Get_triggers"})"},
        {Caller::Of::control, R"({"command":"Get_traces"})"},
        {Caller::Of::service, R"({"command":"Delete_trigger","trigger_id":1})"},
    };
};

TEST_F(ServiceWithoutMemory, StartsOrSaysWhyNot) {
    failEveryAllocationOfAProcess(
        "starting the service", [&](std::size_t nth, std::size_t count) { return start(nth, count); },
        /*stride*/ 11);
    EXPECT_GT(refusals_, 100U);
}

TEST_F(ServiceWithoutMemory, KeepsWhatItHasAnsweredAndServesOn) {
    failEveryAllocationOfAProcess(
        "serving", [&](std::size_t nth, std::size_t count) { return serve(nth, count); },
        /*stride*/ 11);
}

}  // namespace

}  // namespace torture
