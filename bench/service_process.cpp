// SPDX-License-Identifier: Apache-2.0
#include "service_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

ServiceProcess::ServiceProcess(std::string const &program) {
    std::string folder = (std::filesystem::temp_directory_path() / "korvo-bench.XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + folder);
    }
    folder_ = folder;
    setenv("KORVO_RUNTIME_DIR", folder_.c_str(), 1);
    setenv("KORVO_STATE_DIR", folder_.c_str(), 1);

    int pipe_ends[2];
    if (pipe2(pipe_ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    output_ = pipe_ends[0];
    process_ = fork();
    if (process_ == 0) {
        dup2(pipe_ends[1], STDOUT_FILENO);
        execl(program.c_str(), program.c_str(), static_cast<char *>(nullptr));
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
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}
