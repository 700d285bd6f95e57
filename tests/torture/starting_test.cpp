// SPDX-License-Identifier: Apache-2.0
// The service's start as a process, while memory runs out at each place of it in turn: it serves, or it ends and says why.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "emulator/emulator.h"
#include "live_blocks/live_blocks.h"
#include "platform_contract/development/raw_socket.h"
#include "processes/kill.h"
#include "processes/temporary_folder.h"
#include "support/rounds.h"
#include "support/service.h"

/// The service's own, under this name in this program.
int simulatorMain(int argc, char *argv[]);

namespace torture {

namespace {

using end_to_end::Service;
using processes::TemporaryFolder;

/// A start takes milliseconds.
constexpr unsigned int seconds_of_a_start = 60;

/// What a process and the one that has started it tell each other.
struct Told {
    std::atomic<std::size_t> failed{0};
    std::atomic<bool> relent{false};
};
Told *told = nullptr;
live_blocks::FailingAllocations *failing = nullptr;

void noteFailure() {
    ++told->failed;
    if (told->relent) {
        failing->stop();
    }
}

struct Ends {
    std::array<int, 2> pipe{-1, -1};

    Ends() { EXPECT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0); }
    ~Ends() {
        (void)close(pipe[0]);
        (void)close(pipe[1]);
    }
    Ends(Ends const &) = delete;
    Ends &operator=(Ends const &) = delete;

    /// Reads on until this text has come, or all has; false then.
    bool readUntil(std::string const &wanted, std::string &text) const {
        std::array<char, 4096> buffer{};
        while (wanted.empty() || text.find(wanted) == std::string::npos) {
            ssize_t const size = read(pipe[0], buffer.data(), buffer.size());
            if (size <= 0) {
                return false;
            }
            text.append(buffer.data(), static_cast<std::size_t>(size));
        }
        return true;
    }
};

/// The service, which is this process from now on.
[[noreturn]] void serve(std::vector<std::string> arguments, std::size_t nth, std::size_t count) {
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    (void)alarm(seconds_of_a_start);
    std::vector<char *> words;
    for (std::string &argument : arguments) {
        words.push_back(argument.data());
    }
    words.push_back(nullptr);
    live_blocks::onFailure(noteFailure);
    int code = 0;
    {
        live_blocks::Recording const recording(live_blocks::Threads::started);
        live_blocks::FailingAllocations failures(nth, count);
        failing = &failures;
        code = simulatorMain(static_cast<int>(words.size() - 1), words.data());
    }
    (void)std::fflush(stdout);
    _exit(code);
}

std::string frameOf(std::string const &command) {
    auto const number = [](std::size_t value) {
        std::string bytes;
        for (unsigned int shift = 0; shift < 32; shift += 8) {
            bytes += static_cast<char>((value >> shift) & 0xffU);
        }
        return bytes;
    };
    std::string const payload = number(1) + "r" + number(command.size()) + command;
    return std::string("KV\x01\x01", 4) + number(payload.size()) + payload;
}

/// A new client asks, and it is done.
bool isServed() {
    RawSocket const client = RawSocket::connect(Service::socketPath());
    if (!client.isOpen() ||
        !client.send(frameOf(R"({"command":"Create_washer_action","action_name":"w"})"))) {
        return false;
    }
    std::string answer;
    // Refused, or disconnected, where memory is too short for this one.
    while (answer.find('}') == std::string::npos) {
        std::string const more = client.receive();
        if (more.empty()) {
            return false;
        }
        answer += more;
    }
    return answer.find(R"("status":0)") != std::string::npos;
}

class StartingWithoutMemory : public ::testing::Test {
  protected:
    void SetUp() override {
        if (emulator::present) {
            GTEST_SKIP() << "the emulator does not promise that a process of several threads can be forked";
        }
        setenv("KORVO_LOG_LEVEL", "warning", 1);
        void *const memory =
            mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        told = static_cast<Told *>(memory);
    }
    ~StartingWithoutMemory() override {
        if (told != nullptr) {
            (void)munmap(std::exchange(told, nullptr), sizeof(Told));
        }
    }

    /// Starts it once; whether any allocation failed.
    bool start(std::size_t nth, std::size_t count) {
        TemporaryFolder const folder;
        setenv("KORVO_STATE_DIR", folder.path().c_str(), 1);
        std::vector<std::string> arguments{"korvo-action-engine-simulator", "--store", folder / "store"};
        new (told) Told;
        Ends out;
        Ends errors;
        pid_t const child = fork();
        if (child == 0) {
            (void)dup2(out.pipe[1], STDOUT_FILENO);
            (void)dup2(errors.pipe[1], STDERR_FILENO);
            serve(std::move(arguments), nth, count);
        }
        (void)close(std::exchange(out.pipe[1], -1));
        (void)close(std::exchange(errors.pipe[1], -1));
        std::string printed;
        std::string said;
        bool const is_ready = out.readUntil("korvo-action-engine-simulator: ready", printed);
        if (is_ready) {
            told->relent = true;
            // What still fails may be a client's; those after it are served.
            EXPECT_TRUE(isServed() || isServed() || isServed() || isServed()) << "nobody is served";
            (void)kill(child, SIGTERM);
        }
        (void)errors.readUntil("", said);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status) << ": " << printed << said;
        EXPECT_EQ(WEXITSTATUS(status), is_ready ? 0 : 1) << printed << said;
        if (!is_ready) {
            ++refusals_;
            // The last line is the program's own.
            std::size_t const last = said.rfind("korvo-action-engine-simulator: ");
            EXPECT_NE(last, std::string::npos) << "it does not say why: " << said;
            EXPECT_EQ(said.find('\n', last), said.size() - 1) << said;
            EXPECT_EQ(said.find("bad_alloc", last), std::string::npos) << said;
        }
        EXPECT_TRUE(is_ready || told->failed != 0) << said;
        return told->failed != 0;
    }

    std::size_t refusals_ = 0;
};

TEST_F(StartingWithoutMemory, ServesOrSaysWhyNot) {
    failEveryAllocationOfAProcess(
        "starting the service", [&](std::size_t nth, std::size_t count) { return start(nth, count); },
        /*stride*/ 11);
    EXPECT_GT(refusals_, 100U);
}

}  // namespace

}  // namespace torture
