// SPDX-License-Identifier: Apache-2.0
// Memory that runs out, at each allocation in turn: a command is carried out or refused as a whole, in memory and in the
// store, nothing that is due is lost, and the service works on.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "examples.h"
#include "kept.h"
#include "live_blocks/live_blocks.h"
#include "simulator/methods.h"
#include "support.h"

namespace simulator::tests {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;

std::unique_ptr<Bench> preparedBench(std::string const &path) {
    auto bench = std::make_unique<Bench>(path);
    for (char const *const command : preparation) {
        EXPECT_EQ(bench->status(command), 0) << command;
    }
    // A short answer that was spoilt takes nothing from those that come.
    std::size_t const method = *findMethod("Get_triggers");
    bench->dispatcher.faults().with([&](FaultTable &faults) {
        Fault fault;
        fault.status = 9;
        fault.missing = "status";
        fault.count = 1;
        (void)faults.add(method, fault);
    });
    EXPECT_EQ(bench->dispatcher.answer(R"({"command":"Get_triggers"})").text,
              R"({"command":"Get_triggers"})");
    return bench;
}

/// One command at a prepared service, while each of its allocations fails in turn, `count` in a row. How many have failed.
std::size_t failEachAllocation(Example const &example, std::size_t count) {
    std::string const command = commandText(example);
    std::string const succeeded = responseText(example);
    std::string const refused = std::string(R"({"command":")") + example.method + R"(","status":9})";
    std::size_t failures = 0;
    bool failed = true;
    std::size_t nth = 1;
    while (failed) {
        TemporaryFolder const folder;
        std::string const path = folder / "store";
        std::unique_ptr<Bench> bench = preparedBench(path);
        auto const before = keptBy(bench->engine);
        std::string answer;
        // Until it has succeeded; where memory was short for something that can be left out, there are further ones to try.
        for (; answer != succeeded; ++nth) {
            std::string const *text = nullptr;
            {
                live_blocks::Recording const recording;
                live_blocks::FailingAllocations failing(nth, count);
                text = &bench->dispatcher.answer(command).text;
                failing.stop();
                failed = failing.failed() != 0;
            }
            answer = *text;
            failures += failed ? 1 : 0;
            auto const now = keptBy(bench->engine);
            std::string const what = "allocation " + std::to_string(nth) + ", answer " + answer;
            EXPECT_EQ(keptIn(bench->store), now) << what;
            if (answer != succeeded) {
                EXPECT_TRUE(failed) << what;
                // With a name that could not be read there is none to answer with.
                EXPECT_THAT(answer, testing::AnyOf(refused, R"({"command":"","status":9})")) << what;
                EXPECT_EQ(now, before) << what;
            }
            if (testing::Test::HasFailure()) {
                return failures;
            }
        }
        auto const after = keptBy(bench->engine);
        bench.reset();
        EXPECT_EQ(keptIn(path), after);
    }
    return failures;
}

class ShortMemory : public testing::Test {
  protected:
    void SetUp() override {
        if (!live_blocks::canFail()) {
            GTEST_SKIP() << "the sanitizer has an allocator of its own";
        }
    }
};

}  // namespace

TEST_F(ShortMemory, EachCommandIsCarriedOutOrRefusedAsAWhole) {
    for (std::size_t const count : {std::size_t{1}, std::size_t{2}, std::size_t{3}, live_blocks::for_ever}) {
        std::size_t failures = 0;
        for (Example const &example : examples) {
            SCOPED_TRACE(std::string(example.method) + ", failures in a row: " + std::to_string(count));
            failures += failEachAllocation(example, count);
            ASSERT_FALSE(HasFailure());
        }
        EXPECT_GT(failures, 300U);
    }
}

TEST_F(ShortMemory, NothingThatIsDueIsLostAndNothingRunsTwice) {
    std::string const message =
        R"(<tt:Message PropertyOperation=\"Changed\"><tt:Source/><tt:Data><tt:SimpleItem Name=\"State\" Value=\"on\"/></tt:Data></tt:Message>)";
    std::string const event =
        R"({"command":"Onvif_event","topic":"tns1:A/B","message":")" + message +
        R"(","namespace_keys":["tns1","tt"],"namespace_uris":["urn:a","http://www.onvif.org/ver10/schema"]})";
    std::size_t failures = 0;
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth));
        std::unique_ptr<Bench> const bench = preparedBench("");
        for (int const trigger : {1, 3}) {
            ASSERT_EQ(bench->status(R"({"command":"Create_association","trigger_id":)" +
                                    std::to_string(trigger) + R"(,"action_id":8})"),
                      0);
        }
        // Action 8 by the event and, five seconds later, because it was stable; actions 3 and 9 by the timer.
        bench->local_time = {3, 12 * 60 * 60};
        ASSERT_EQ(bench->status(event), 0);
        bench->advance(seconds(60));
        std::size_t steps = 0;
        bool works = true;
        bool const failed = live_blocks::failNth(nth, [&] {
            while (works && steps < 100) {
                try {
                    ++steps;
                    works = bench->engine.step();
                } catch (std::bad_alloc const &) {
                    // As the service does it: again, later.
                }
            }
        });
        ASSERT_LT(steps, 100U);
        std::vector<std::uint32_t> ran;
        for (Job const &job : bench->jobs) {
            ran.push_back(job.action_id);
        }
        ASSERT_THAT(ran, ElementsAre(8, 8, 3, 9));
        ASSERT_EQ(bench->events.size(), 4U);
        // The rhythm of the timer stays.
        bench->advance(milliseconds(59'999));
        ASSERT_THAT(bench->run(), ElementsAre());
        bench->advance(milliseconds(1));
        ASSERT_THAT(bench->run(), ElementsAre(3, 9));
        if (!failed) {
            break;
        }
        ++failures;
    }
    EXPECT_GT(failures, 20U);
}

TEST_F(ShortMemory, AnEventIsTakenAsAWholeOrNotAtAll) {
    std::string const event =
        R"({"command":"Onvif_event","topic":"tns1:A/B","message":"<tt:Message><tt:Data><tt:SimpleItem Name=\"State\" Value=\"on\"/></tt:Data></tt:Message>","namespace_keys":["tns1","tt"],"namespace_uris":["urn:a","http://www.onvif.org/ver10/schema"]})";
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth));
        std::unique_ptr<Bench> const bench = preparedBench("");
        for (int const trigger : {1, 3}) {
            ASSERT_EQ(bench->status(R"({"command":"Create_association","trigger_id":)" +
                                    std::to_string(trigger) + R"(,"action_id":8})"),
                      0);
        }
        bool taken = false;
        bool const failed = live_blocks::failNth(nth, [&] {
            taken = bench->dispatcher.answer(event).text.find(R"("status":0)") != std::string::npos;
        });
        ASSERT_EQ(bench->run().size(), taken ? 1U : 0U);
        bench->advance(seconds(5));
        ASSERT_EQ(bench->run().size(), taken ? 1U : 0U);
        if (!failed) {
            ASSERT_TRUE(taken);
            break;
        }
    }
}

TEST_F(ShortMemory, ATimerThatIsCreatedFiresWhateverFailed) {
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE("allocation " + std::to_string(nth));
        std::unique_ptr<Bench> const bench = preparedBench("");
        bool created = false;
        bool const failed = live_blocks::failNth(nth, [&] {
            created =
                bench->dispatcher
                    .answer(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":7})")
                    .text.find(R"("status":0)") != std::string::npos;
        });
        if (created) {
            ASSERT_EQ(bench->status(R"({"command":"Create_association","trigger_id":4,"action_id":8})"), 0);
            ASSERT_THAT(bench->run(), ElementsAre());
            bench->advance(seconds(7));
            ASSERT_THAT(bench->run(), ElementsAre(8));
        }
        if (!failed) {
            ASSERT_TRUE(created);
            break;
        }
    }
}

TEST_F(ShortMemory, AValueThatCannotBeCopiedLeavesTheOneBefore) {
    std::string const long_text(100, 'x');
    for (Value const &source : {Value(long_text), Value(Texts{long_text, "b"}), Value(Numbers{1, 2, 3})}) {
        for (std::size_t nth = 1;; ++nth) {
            Value value(7U);
            bool copied = false;
            bool const failed = live_blocks::failNth(nth, [&] {
                try {
                    value = source;
                    copied = true;
                } catch (std::bad_alloc const &) {
                    // What is there is looked at below.
                }
            });
            ASSERT_EQ(copied, !failed);
            ASSERT_EQ(value == source, copied);
            ASSERT_EQ(value == Value(7U), !copied);
            if (copied) {
                break;
            }
        }
    }
}

TEST_F(ShortMemory, ARemarkIsLeftOutAndTheCommandCarriedOut) {
    struct Case {
        char const *command;
        char const *answer;
        char const *refusal;
        char const *remark;
    };
    Case const cases[] = {
        {R"({"command":"__get_target_version__","initiator_major":77,"initiator_minor":5})",
         R"({"command":"__get_target_version__","status":0,"target_major":1,"target_minor":19})",
         R"({"command":"__get_target_version__","status":9})", "77.5"},
        {R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":"*","topic_filter_dialect":"","content_filter":"","namespace_keys":[],"namespace_uris":[]})",
         R"({"command":"Create_onvif_trigger","status":0,"trigger_id":1})",
         R"({"command":"Create_onvif_trigger","status":9})", "trigger 1 never fires: "},
    };
    for (Case const &one : cases) {
        SCOPED_TRACE(one.command);
        std::size_t without_remark = 0;
        for (std::size_t nth = 1;; ++nth) {
            Bench bench("", {}, {Catalogue::Nonsense::kept});
            std::string answer;
            std::string const *text = nullptr;
            bool const failed =
                live_blocks::failNth(nth, [&] { text = &bench.dispatcher.answer(one.command).text; });
            answer = *text;
            if (answer == one.answer) {
                without_remark += bench.log.holds(one.remark) ? 0U : 1U;
            } else {
                ASSERT_THAT(answer, testing::AnyOf(one.refusal, R"({"command":"","status":9})")) << nth;
            }
            if (!failed) {
                ASSERT_EQ(answer, one.answer);
                ASSERT_TRUE(bench.log.holds(one.remark));
                break;
            }
        }
        EXPECT_GT(without_remark, 0U);
    }
}

}  // namespace simulator::tests
