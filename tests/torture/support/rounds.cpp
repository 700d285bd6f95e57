// SPDX-License-Identifier: Apache-2.0
#include "support/rounds.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string_view>
#include <thread>

#include "emulator/emulator.h"
#include "korvo_core.h"

namespace torture {

namespace {

/// Far more allocations than any work makes.
constexpr std::size_t most_rounds = 20'000;

/// A round takes milliseconds; whoever is so late does not come any more.
constexpr unsigned int seconds_of_a_round = 60;

/// What is being done, for those who can allocate nothing to say it.
std::array<char, 200> current{};

void begin(std::string const &what) {
    (void)std::snprintf(current.data(), current.size(), "%s", what.c_str());
}

void tellAndDie(int signal) {
    static constexpr char crashed[] = "\ntorture: it crashed, or hung, in round: ";
    (void)!write(STDOUT_FILENO, crashed, sizeof crashed - 1);
    (void)!write(STDOUT_FILENO, current.data(), std::strlen(current.data()));
    (void)!write(STDOUT_FILENO, "\n", 1);
    (void)std::signal(signal, SIG_DFL);
    (void)raise(signal);
}

std::atomic<bool> client_failed{false};
std::atomic<bool> platform_failed{false};
std::atomic<bool> thread_start_failed{false};
std::atomic<bool> unknown_failed{false};

/// Looks who has called, by the exported functions on the stack.
void noteCulprit() {
    if (emulator::present) {
        // Whether stacks of the camera's processor can be read so far has not been tried.
        unknown_failed = true;
        return;
    }
    std::array<void *, 100> frames{};
    int const count = backtrace(frames.data(), static_cast<int>(frames.size()));
    bool is_client = false;
    for (int index = 0; index < count; ++index) {
        Dl_info found{};
        if (dladdr(frames.at(static_cast<std::size_t>(index)), &found) == 0 || found.dli_sname == nullptr) {
            continue;
        }
        std::string_view const name = found.dli_sname;
        if (name == "pthread_create") {
            thread_start_failed = true;
            return;
        }
        if (name.rfind("korvo_core_", 0) == 0 || name.find("basicSendCommand") != name.npos ||
            name.find("basicReceiveResponse") != name.npos) {
            platform_failed = true;
            return;
        }
        is_client = is_client || name.rfind("korvo_api_action_engine_", 0) == 0;
    }
    (is_client ? client_failed : unknown_failed) = true;
}

void prepare() {
    // The first time it loads a library.
    noteCulprit();
    live_blocks::onFailure(noteCulprit);
    for (int const signal : {SIGALRM, SIGABRT, SIGSEGV, SIGBUS, SIGFPE}) {
        (void)std::signal(signal, tellAndDie);
    }
    // What the C library knows of the time zone is kept, too.
    std::time_t const now = std::time(nullptr);
    std::tm local{};
    (void)localtime_r(&now, &local);
    // So are stacks, as many as threads have lived at once, as long as they are small.
    pthread_attr_t attributes;
    (void)pthread_attr_init(&attributes);
    (void)pthread_attr_setstacksize(&attributes, std::size_t{1} << 20);
    (void)pthread_setattr_default_np(&attributes);
    (void)pthread_attr_destroy(&attributes);
    useAllStacks();
}

std::string patternOf(std::size_t count) {
    return count == live_blocks::for_ever ? "all from there on" : std::to_string(count) + " in a row";
}

/// Takes what may stay out of what has stayed.
std::vector<std::size_t> unexpected(std::vector<live_blocks::Block> const &left, Leavings leavings) {
    std::vector<std::size_t> sizes;
    for (live_blocks::Block const &block : left) {
        auto const allowed = std::find(leavings.begin(), leavings.end(), block.size);
        if (allowed != leavings.end()) {
            leavings.erase(allowed);
        } else {
            sizes.push_back(block.size);
        }
    }
    return sizes;
}

/// Tells at the end how much was tried.
class Tally : public ::testing::Environment {
  public:
    void TearDown() override { std::printf("torture: %zu rounds, %zu failures\n", rounds, failures); }

    std::size_t rounds = 0;
    std::size_t failures = 0;
};

Tally *const tally = static_cast<Tally *>(::testing::AddGlobalTestEnvironment(new Tally));

std::string nameOf(std::string const &what, std::size_t nth, std::size_t count) {
    return what + ", allocation " + std::to_string(nth) + ", " + patternOf(count);
}

void watch(std::string const &what, std::function<void()> const &work, Leavings const &leavings) {
    begin(what);
    SCOPED_TRACE(current.data());
    client_failed = platform_failed = thread_start_failed = unknown_failed = false;
    (void)alarm(seconds_of_a_round);
    live_blocks::Recording recording(live_blocks::Threads::started);
    std::thread(work).join();
    std::vector<live_blocks::Block> const left = recording.end();
    (void)alarm(0);
    EXPECT_EQ(unexpected(left, leavings), std::vector<std::size_t>{})
        << "bytes of blocks that were left behind";
    for (live_blocks::Block const &block : left) {
        std::free(block.address);
    }
    ++tally->rounds;
}

/// Whether anything failed.
bool doRound(std::string const &what, std::function<void(Fault &)> const &round, Leavings const &leavings,
             std::size_t nth, std::size_t count) {
    Fault fault(nth, count);
    watch(
        nameOf(what, nth, count), [&] { round(fault); }, leavings);
    tally->failures += fault.failed();
    return fault.failed() != 0;
}

/// In every pattern, each time until nothing fails any more.
void goThrough(std::string const &what,
               std::function<bool(std::size_t nth, std::size_t count)> const &fails_in_round,
               std::size_t stride) {
    if (char const *const only = std::getenv("KORVO_TORTURE_ONLY")) {
        char *end = nullptr;
        std::size_t const nth = std::strtoul(only, &end, 10);
        std::size_t const count = std::strtoul(end, nullptr, 10);
        (void)fails_in_round(nth, count == 0 ? live_blocks::for_ever : count);
        return;
    }
    for (std::size_t const count : {std::size_t{1}, std::size_t{2}, std::size_t{3}, live_blocks::for_ever}) {
        // The emulator takes ten times as long, and meets the same code.
        std::size_t const step = isLong()                         ? 1
                                 : emulator::present              ? 11
                                 : count == 1                     ? 1
                                 : count == live_blocks::for_ever ? 3
                                                                  : 7;
        std::size_t nth = 1;
        while (nth < most_rounds && fails_in_round(nth, count) && !::testing::Test::HasFailure()) {
            nth += isLong() ? step : step * stride;
        }
        EXPECT_GT(nth, 1U) << what << ": no allocation was made to fail";
        EXPECT_LT(nth, most_rounds) << what << ": allocations go on failing";
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

}  // namespace

void openLog(char const *level) {
    setenv("KORVO_LOG_LEVEL", level, 1);
    (void)korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_DEBUG, "begin");
}

void useAllStacks() {
    std::array<std::thread, 16> threads;
    std::atomic<bool> are_all_there{false};
    for (std::thread &thread : threads) {
        thread = std::thread([&] {
            while (!are_all_there) {
                std::this_thread::yield();
            }
        });
    }
    are_all_there = true;
    for (std::thread &thread : threads) {
        thread.join();
    }
}

Culprits culprits() {
    return {client_failed, platform_failed, thread_start_failed, unknown_failed};
}

void doOnce(std::string const &what, std::function<bool()> const &work) {
    prepare();
    watch(what, [&] { tally->failures += work() ? 1U : 0U; }, {});
}

void failEveryAllocation(std::string const &what, std::function<void(Fault &)> const &round,
                         Leavings const &leavings, std::size_t stride) {
    prepare();
    // What is made once and stays, such as caches of stacks.
    {
        Fault none(most_rounds, 1);
        std::thread([&] { round(none); }).join();
    }
    goThrough(
        what, [&](std::size_t nth, std::size_t count) { return doRound(what, round, leavings, nth, count); },
        stride);
}

void failEveryAllocationOfAProcess(std::string const &what,
                                   std::function<bool(std::size_t nth, std::size_t count)> const &round,
                                   std::size_t stride) {
    for (int const signal : {SIGALRM, SIGABRT, SIGSEGV, SIGBUS, SIGFPE}) {
        (void)std::signal(signal, tellAndDie);
    }
    goThrough(
        what,
        [&](std::size_t nth, std::size_t count) {
            begin(nameOf(what, nth, count));
            SCOPED_TRACE(current.data());
            // The process, which would be waited for without end, has the same limit; what it has said is worth more.
            (void)alarm(2 * seconds_of_a_round);
            bool const failed = round(nth, count);
            (void)alarm(0);
            ++tally->rounds;
            tally->failures += failed ? 1U : 0U;
            return failed;
        },
        stride);
}

}  // namespace torture
