// SPDX-License-Identifier: Apache-2.0
#include "service_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

ServiceProcess::ServiceProcess(std::string const &program, std::vector<std::string> const &arguments) {
    std::vector<std::string> words = arguments;
    words.insert(words.begin(), program);
    std::vector<char *> pointers;
    for (std::string &word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    int pipe_ends[2];
    if (pipe2(pipe_ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    output_ = pipe_ends[0];
    process_ = fork();
    if (process_ == 0) {
        dup2(pipe_ends[1], STDOUT_FILENO);
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    close(pipe_ends[1]);

    std::string said;
    char buffer[256];
    while (said.find("ready") == std::string::npos) {
        ssize_t const count = read(output_, buffer, sizeof buffer);
        if (count <= 0) {
            throw std::runtime_error(program + " did not start");
        }
        said.append(buffer, static_cast<std::size_t>(count));
    }
}

ServiceProcess::~ServiceProcess() {
    if (process_ > 0) {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }
    close(output_);
}
