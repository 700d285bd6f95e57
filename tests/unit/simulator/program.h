// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_PROGRAM_H
#define KORVO_TESTS_UNIT_SIMULATOR_PROGRAM_H

// The program as a process of its own, and clients at its messaging.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "emulator/emulator.h"
#include "korvo_core.h"
#include "processes/child.h"
#include "support.h"

namespace simulator::tests {

inline constexpr std::chrono::milliseconds patience{20'000};

/// A running simulator. What it prints on standard output and in its log is kept.
class Program {
  public:
    explicit Program(std::vector<std::string> arguments) : child_(command(std::move(arguments))) {}

    /// The next line of standard output; what there is of it after the patience or the end.
    std::string line() {
        (void)child_.out().waitFor("\n", read_);
        std::string const text = child_.out().text();
        std::string line = text.substr(read_, text.find('\n', read_) - read_);
        read_ = std::min(read_ + line.size() + 1, text.size());
        return line;
    }

    void signal(int number) { child_.signal(number); }

    /// So many bytes of memory it has had at once; 0 where a sanitizer or an emulator has its own share of them.
    std::size_t mostMemory() const {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        return 0;
#else
        std::string const status = readFile("/proc/" + std::to_string(child_.pid()) + "/status");
        std::size_t const peak = status.find("VmHWM:");
        EXPECT_NE(peak, std::string::npos);
        return !emulator::present ? std::stoul(status.substr(peak + 6)) * 1024 : 0;
#endif
    }

    /// Waits for the end. Minus the signal's number when it was one.
    int exitStatus() {
        auto const exit = child_.wait();
        EXPECT_TRUE(exit.has_value()) << "the program does not end";
        return !exit.has_value() ? -1 : exit->signal != 0 ? -exit->signal : exit->code;
    }

    /// All of standard error; only after exitStatus().
    std::string errors() {
        return child_.errors().text();
    }

  private:
    static processes::Command command(std::vector<std::string> arguments) {
        processes::Command command;
        command.program = SIMULATOR_PROGRAM;
        command.arguments = std::move(arguments);
        return command;
    }

    processes::Child child_;
    std::size_t read_ = 0;
};

/// A client at the default target.
class Client {
  public:
    explicit Client(std::string service = "action_engine") : service_(std::move(service)) {
        EXPECT_EQ(korvo_core_ipc_initiator_init(nullptr, "test", &messaging_, 1), KORVO_CORE_STATUS_NO_ERROR);
    }
    ~Client() { (void)korvo_core_ipc_deinit(messaging_); }
    Client(Client const &) = delete;
    Client &operator=(Client const &) = delete;

    korvo_core_status send(std::string const &command, std::string const &request_id) {
        return korvo_core_ipc_initiator_command_send(messaging_, service_.c_str(), nullptr,
                                                     request_id.c_str(), command.c_str());
    }

    /// The next response, "request: response".
    std::optional<std::string> receive(std::chrono::milliseconds timeout = patience) {
        char *texts[4] = {};
        korvo_core_status const status = korvo_core_ipc_initiator_response_receive(
            messaging_, static_cast<int>(timeout.count()), &texts[0], &texts[1], &texts[2], &texts[3]);
        std::optional<std::string> response;
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            response = std::string(texts[2]) + ": " + texts[3];
        }
        for (char *const text : texts) {
            std::free(text);
        }
        return response;
    }

    std::string call(std::string const &command) {
        EXPECT_EQ(send(command, "r"), KORVO_CORE_STATUS_NO_ERROR);
        return receive().value_or("no response");
    }

    void subscribe() {
        EXPECT_EQ(korvo_core_ipc_initiator_event_receive_callback(messaging_, onEvent, this),
                  KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(korvo_core_ipc_initiator_event_subscribe(messaging_, service_.c_str()),
                  KORVO_CORE_STATUS_NO_ERROR);
    }

    /// Waits until so many events have come, and gives them.
    std::vector<std::string> events(std::size_t count) {
        std::unique_lock<std::mutex> lock(mutex_);
        EXPECT_TRUE(arrived_.wait_for(lock, patience, [&] { return events_.size() >= count; }));
        return events_;
    }

  private:
    static void onEvent(char **, char **, char **event, void *context) {
        auto &client = *static_cast<Client *>(context);
        std::lock_guard<std::mutex> const lock(client.mutex_);
        client.events_.emplace_back(*event);
        client.arrived_.notify_all();
    }

    std::string service_;
    void *messaging_ = nullptr;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::string> events_;
};

class ProgramTest : public testing::Test {
  protected:
    ProgramTest() {
        ::setenv("KORVO_RUNTIME_DIR", runtime.path().c_str(), 1);
        ::setenv("KORVO_STATE_DIR", state.path().c_str(), 1);
    }

    static void expectReady(Program &program) {
        ASSERT_EQ(program.line(), "korvo-action-engine-simulator: ready (target \"\")");
    }

    TemporaryFolder runtime;
    TemporaryFolder state;
};

}  // namespace simulator::tests

#endif
