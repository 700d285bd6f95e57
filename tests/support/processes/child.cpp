// SPDX-License-Identifier: Apache-2.0
#include "processes/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <map>
#include <ostream>
#include <stdexcept>

#include "emulator/emulator.h"
#include "processes/kill.h"

namespace processes {

namespace {

struct Pipe {
    Descriptor reading;
    Descriptor writing;
};

Pipe newPipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

std::vector<char *> pointers(std::vector<std::string> &texts) {
    std::vector<char *> result;
    for (std::string &text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> environmentWith(std::vector<std::pair<std::string, std::string>> const &added) {
    std::map<std::string, std::string> variables;
    for (char **variable = environ; *variable != nullptr; ++variable) {
        std::string const text = *variable;
        auto const equals = text.find('=');
        variables[text.substr(0, equals)] = text.substr(equals + 1);
    }
    for (auto const &[name, value] : added) {
        variables[name] = value;
    }
    std::vector<std::string> result;
    for (auto const &[name, value] : variables) {
        result.push_back(name + "=" + value);
    }
    return result;
}

}  // namespace

std::ostream &operator<<(std::ostream &out, Exit const &exit) {
    return exit.signal != 0 ? out << "killed by signal " << exit.signal : out << "exit code " << exit.code;
}

Child::Child(Command const &command) {
    std::vector<std::string> words;
    if (command.ends_with_us) {
        words = {"/usr/bin/setpriv", "--pdeathsig", "KILL"};
    }
    if (command.is_of_this_machine) {
        words.push_back(command.program);
    } else {
        for (std::string &word : emulator::wordsToStart(command.program)) {
            words.push_back(std::move(word));
        }
    }
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    std::vector<std::string> variables = environmentWith(command.environment);

    Pipe out = newPipe();
    Pipe errors = newPipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out.writing.get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.writing.get(), STDERR_FILENO);
    int const failed = posix_spawn(&pid_, words.front().c_str(), &actions, nullptr, pointers(words).data(),
                                   pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) {
        throw std::runtime_error("cannot start " + words.front() + ": " + std::strerror(failed));
    }
    out_ = std::make_unique<TextStream>(std::move(out.reading));
    errors_ = std::make_unique<TextStream>(std::move(errors.reading));

    waiter_ = std::thread([this] {
        // Looks first and takes the child away under the mutex, so that signal() never names a stranger.
        siginfo_t ended;
        while (waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
        }
        std::lock_guard<std::mutex> const lock(mutex_);
        int status = 0;
        waitpid(pid_, &status, 0);
        exit_ = WIFEXITED(status) ? exited(WEXITSTATUS(status)) : killedBy(WTERMSIG(status));
        changed_.notify_all();
    });
}

Child::~Child() {
    signal(SIGKILL);
    waiter_.join();
    (void)errors_->waitForEnd();
    std::string const said = errors_->text();
    EXPECT_EQ(said.find("Sanitizer: "), std::string::npos) << said;
    EXPECT_EQ(said.find("runtime error: "), std::string::npos) << said;
}

bool Child::running() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return !exit_.has_value();
}

void Child::signal(int number) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (exit_.has_value()) {
        return;
    }
    if (number == SIGKILL) {
        processes::kill(pid_);
    } else {
        ::kill(pid_, number);
    }
}

std::optional<Exit> Child::wait(milliseconds limit) {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, limit, [&] { return exit_.has_value(); })) {
            return std::nullopt;
        }
    }
    (void)out_->waitForEnd();
    (void)errors_->waitForEnd();
    return exit_;
}

Resources resourcesOf(pid_t process) {
    auto const entries_of = [&](char const *folder) {
        std::filesystem::directory_iterator const entries("/proc/" + std::to_string(process) + "/" + folder);
        return static_cast<std::size_t>(std::distance(entries, std::filesystem::directory_iterator()));
    };
    return {entries_of("fd"), entries_of("task")};
}

Finished run(Command const &command, milliseconds limit) {
    Child child(command);
    auto const exit = child.wait(limit);
    return {exit, child.out().text(), child.errors().text()};
}

}  // namespace processes
