// SPDX-License-Identifier: Apache-2.0
#include "support/failing_service.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "live_blocks/live_blocks.h"
#include "processes/limits.h"
#include "support/service.h"
#include "support/workspace.h"

/// The service's own, under this name in this program.
int simulatorMain(int argc, char *argv[]);

namespace torture {

/// What the process and the one that has started it tell each other.
struct FailingService::Told {
    std::atomic<std::size_t> failed{0};
    std::atomic<bool> begin{false};
    std::atomic<bool> has_begun{false};
    std::atomic<bool> relent{false};
};

namespace {

/// It takes milliseconds.
constexpr unsigned int seconds_of_a_life = 60;

constexpr int moment_ms = 300;
constexpr int answered_within_ms = 10'000;

constexpr unsigned char command_type = 1;
constexpr unsigned char subscribe_type = 4;
constexpr std::size_t header_size = 8;

// Of the process.
std::atomic<std::size_t> *failures = nullptr;
std::atomic<bool> *relents = nullptr;
std::optional<live_blocks::FailingAllocations> failing;

void noteFailure() {
    ++*failures;
    if (*relents) {
        failing->stop();
    }
}

std::string number(std::size_t value) {
    std::string bytes;
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((value >> shift) & 0xffU);
    }
    return bytes;
}

std::string frame(unsigned char type, std::string const &payload) {
    return std::string("KV\x01") + static_cast<char>(type) + number(payload.size()) + payload;
}

/// The size of the frame that begins like this.
std::size_t sizeOf(std::string const &begin) {
    std::size_t size = 0;
    for (std::size_t byte = 0; byte < 4; ++byte) {
        size |= std::size_t{static_cast<unsigned char>(begin.at(4 + byte))} << (8 * byte);
    }
    return header_size + size;
}

std::string socketPath(Caller::Of of) {
    std::string service = end_to_end::Service::socketPath();
    if (of == Caller::Of::service) {
        return service;
    }
    for (auto const &entry :
         std::filesystem::directory_iterator(end_to_end::Workspace::ofThisProgram().runtimeFolder())) {
        if (entry.is_socket() && entry.path() != service) {
            return entry.path().string();
        }
    }
    return "";
}

}  // namespace

FailingService::Pipe::Pipe() {
    EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC), 0);
}

FailingService::Pipe::~Pipe() {
    (void)close(ends_[0]);
    closeEnd();
}

void FailingService::Pipe::closeEnd() {
    if (ends_[1] >= 0) {
        (void)close(std::exchange(ends_[1], -1));
    }
}

bool FailingService::Pipe::readUntil(std::string const &wanted, std::string &text) const {
    std::array<char, 4096> buffer{};
    while (wanted.empty() || text.find(wanted) == std::string::npos) {
        ssize_t const size = read(ends_[0], buffer.data(), buffer.size());
        if (size <= 0) {
            return false;
        }
        text.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return true;
}

FailingService::FailingService(Since since, std::size_t nth, std::size_t count) {
    void *const memory =
        mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    told_ = new (memory) Told;
    setenv("KORVO_STATE_DIR", folder_.path().c_str(), 1);
    child_ = fork();
    if (child_ == 0) {
        serve(since, nth, count);
    }
    out_.closeEnd();
    errors_.closeEnd();
}

FailingService::~FailingService() {
    if (child_ > 0) {
        (void)kill(child_, SIGKILL);
        (void)waitpid(child_, nullptr, 0);
    }
    (void)munmap(told_, sizeof(Told));
}

void FailingService::serve(Since since, std::size_t nth, std::size_t count) {
    (void)dup2(out_.end(), STDOUT_FILENO);
    (void)dup2(errors_.end(), STDERR_FILENO);
    (void)prctl(PR_SET_PDEATHSIG, SIGKILL);
    (void)alarm(seconds_of_a_life);
    failures = &told_->failed;
    relents = &told_->relent;
    live_blocks::onFailure(noteFailure);
    std::array<std::string, 3> arguments{"korvo-action-engine-simulator", "--store", folder_ / "store"};
    std::array<char *, 4> words{arguments[0].data(), arguments[1].data(), arguments[2].data(), nullptr};
    if (since == Since::start) {
        failing.emplace(nth, count);
    } else {
        std::thread([this, nth, count] {
            while (!told_->begin) {
                std::this_thread::sleep_for(processes::milliseconds(1));
            }
            failing.emplace(nth, count);
            told_->has_begun = true;
        }).detach();
    }
    int code = 0;
    {
        live_blocks::Recording const recording(live_blocks::Threads::started);
        code = simulatorMain(arguments.size(), words.data());
    }
    (void)std::fflush(stdout);
    _exit(code);
}

bool FailingService::isReady() {
    return out_.readUntil("korvo-action-engine-simulator: ready", printed_);
}

void FailingService::begin() {
    told_->begin = true;
    while (!told_->has_begun) {
        std::this_thread::yield();
    }
}

void FailingService::relent() {
    told_->relent = true;
}

std::size_t FailingService::failed() const {
    return told_->failed;
}

int FailingService::stop() {
    (void)kill(child_, SIGTERM);
    return wait();
}

int FailingService::wait() {
    (void)errors_.readUntil("", said_);
    int status = 0;
    EXPECT_EQ(waitpid(std::exchange(child_, -1), &status, 0) > 0, true);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status) << ": " << printed_ << said_;
    return WEXITSTATUS(status);
}

Caller::Caller(Of of) : socket_(RawSocket::connect(socketPath(of))) {}

void Caller::subscribe() const {
    (void)socket_.send(frame(subscribe_type, ""));
}

std::optional<std::string> Caller::ask(std::string const &command, FailingService *failing_service) const {
    std::string const payload = number(1) + "r" + number(command.size()) + command;
    if (!socket_.isOpen() || !socket_.send(frame(command_type, payload))) {
        return std::nullopt;
    }
    std::string answer;
    while (answer.size() < header_size || answer.size() < sizeOf(answer)) {
        if (failing_service != nullptr && !socket_.comes(moment_ms)) {
            failing_service->relent();
        }
        if (!socket_.comes(answered_within_ms)) {
            ADD_FAILURE() << "nobody tells what became of " << command;
            return std::nullopt;
        }
        std::string const more = socket_.receive();
        if (more.empty()) {
            return std::nullopt;
        }
        answer += more;
    }
    return answer.substr(header_size);
}

}  // namespace torture
