// SPDX-License-Identifier: Apache-2.0
#include "support/service.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <stdexcept>
#include <utility>

#include "support/workspace.h"

namespace end_to_end {

Command Service::command(std::vector<std::string> options) {
    Command command;
    command.program = KORVO_SIMULATOR_PROGRAM;
    command.arguments = std::move(options);
    command.ends_with_us = true;
    return command;
}

Service::Service(std::vector<std::string> options)
    : options_(std::move(options)),
      state_(Workspace::ofThisProgram().newFolder("service")),
      snapshots_(state_ / "snapshots"),
      outbox_(state_ / "outbox") {
    options_.insert(options_.end(), {"--snapshots", snapshots_.string(), "--outbox", outbox_.string()});
    start();
}

Service::~Service() {
    if (running()) {
        stop();
    }
    if (::testing::Test::HasFailure() && child_ != nullptr) {
        std::printf("-- log of the service\n%s-- end of the log\n", log().c_str());
    }
}

void Service::start() {
    Command started = command(options_);
    started.environment = {{"KORVO_STATE_DIR", state_.string()}};
    child_ = std::make_unique<Child>(started);
    if (!child_->out().waitFor("korvo-action-engine-simulator: ready")) {
        child_->signal(SIGKILL);
        (void)child_->wait();
        throw std::runtime_error("the service did not start: " + child_->errors().text());
    }
}

/// That of the service, not of its control: what the name begins with is made of the service's.
std::string Service::socketPath() {
    constexpr char const *action_engine = "fe8630b91f775a9f9776bb75";
    for (auto const &entry :
         std::filesystem::directory_iterator(Workspace::ofThisProgram().runtimeFolder())) {
        if (entry.is_socket() && entry.path().filename().string().rfind(action_engine, 0) == 0) {
            return entry.path().string();
        }
    }
    return "";
}

void Service::stop() {
    child_->signal(SIGTERM);
    auto const exit = child_->wait();
    ASSERT_TRUE(exit.has_value()) << "the service does not end";
    EXPECT_EQ(*exit, exited(0)) << child_->errors().text();
}

void Service::kill() {
    child_->signal(SIGKILL);
    ASSERT_TRUE(child_->wait().has_value());
}

void Service::pause() {
    child_->signal(SIGSTOP);
    // The signal takes its time to reach every thread; before that the service might still answer.
    siginfo_t stopped;
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child_->pid()), &stopped, WSTOPPED), 0);
}

void Service::resume() {
    child_->signal(SIGCONT);
}

}  // namespace end_to_end
