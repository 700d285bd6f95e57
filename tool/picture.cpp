// SPDX-License-Identifier: Apache-2.0
// Pictures of graphs, made by Graphviz.

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "tool/failure.h"
#include "tool/graph.h"
#include "tool/interruption.h"
#include "tool/whole_file.h"

namespace tool {
namespace {

/// A file that has no name, so that neither side ever waits for the other.
class Scratch {
  public:
    Scratch() : descriptor_(::memfd_create("korvo-action-engine", MFD_CLOEXEC)) {
        if (descriptor_ < 0) {
            fail("make", errno);
        }
    }
    ~Scratch() { (void)::close(descriptor_); }
    Scratch(Scratch const &) = delete;
    Scratch &operator=(Scratch const &) = delete;

    int descriptor() const { return descriptor_; }

    /// Leaves the place at the beginning, where the next reader begins.
    void fill(std::string const &text) {
        if (int const problem = writeAll(descriptor_, text); problem != 0) {
            fail("write", problem);
        }
        (void)::lseek(descriptor_, 0, SEEK_SET);
    }

    std::string text() {
        (void)::lseek(descriptor_, 0, SEEK_SET);
        std::string read;
        std::array<char, 65536> part;
        for (;;) {
            auto const size = ::read(descriptor_, part.data(), part.size());
            if (size > 0) {
                read.append(part.data(), static_cast<std::size_t>(size));
            } else if (size == 0 || errno != EINTR) {
                return read;
            }
        }
    }

  private:
    [[noreturn]] static void fail(char const *what, int problem) {
        throw Failure(Exit::other,
                      std::string("cannot ") + what + " a file in memory: " + std::strerror(problem));
    }

    int descriptor_;
};

/// Its wait status.
int run(char const *program, char const *argument, Scratch const &in, Scratch const &out,
        Scratch const &errors) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    (void)::posix_spawn_file_actions_init(&actions);
    (void)::posix_spawnattr_init(&attributes);
    (void)::posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    (void)::posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    (void)::posix_spawn_file_actions_adddup2(&actions, errors.descriptor(), STDERR_FILENO);
    // What this program ignores a child would ignore too.
    sigset_t defaults;
    (void)::sigemptyset(&defaults);
    (void)::sigaddset(&defaults, SIGPIPE);
    (void)::posix_spawnattr_setsigdefault(&attributes, &defaults);
    (void)::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    std::string words[] = {program, argument};
    char *arguments[] = {words[0].data(), words[1].data(), nullptr};
    pid_t child = -1;
    int const failed = ::posix_spawnp(&child, program, &actions, &attributes, arguments, environ);
    (void)::posix_spawn_file_actions_destroy(&actions);
    (void)::posix_spawnattr_destroy(&attributes);
    constexpr int not_found = 127 << 8U;
    if (failed != 0) {
        return not_found;
    }
    int status = not_found;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace

std::string pictureOf(std::string const &graph) {
    Scratch in;
    Scratch out;
    Scratch errors;
    in.fill(graph);
    int const status = run("dot", "-Tsvg", in, out, errors);
    // Ctrl-C reaches both.
    interruption::check();
    if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
        throw Failure(Exit::other, "the program dot, which draws the picture, cannot be started",
                      "install Graphviz (on Debian the package graphviz)");
    }
    std::string const picture = out.text();
    // Before the element stands what a file of its own needs.
    auto const begin = picture.find("<svg");
    if (status != 0 || begin == std::string::npos) {
        throw Failure(Exit::other, "the program dot has drawn no picture: " + errors.text(),
                      "see whether \"dot -V\" works");
    }
    return picture.substr(begin);
}

}  // namespace tool
