// SPDX-License-Identifier: Apache-2.0
#include "support/workspace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

extern "C" void __sanitizer_set_report_fd(void *descriptor) __attribute__((weak));

namespace end_to_end {

namespace {

constexpr char marker[] = "-- all that was written before has been read --";

/// Shows the log of a test that failed, and of none other.
class ShowLogOfFailures : public ::testing::EmptyTestEventListener {
    void OnTestStart(::testing::TestInfo const &) override { mark_ = ErrorOutput::ofThisProgram().mark(); }
    void OnTestEnd(::testing::TestInfo const &test) override {
        if (test.result()->Failed()) {
            std::printf("-- log of this process\n%s-- end of the log\n",
                        ErrorOutput::ofThisProgram().since(mark_).c_str());
        }
    }
    std::size_t mark_ = 0;
};

/// Before any test and its threads, so that nobody reads the environment while it is set.
class Preparation : public ::testing::Environment {
    void SetUp() override {
        Workspace::ofThisProgram();
        ErrorOutput::ofThisProgram();
        ::testing::UnitTest::GetInstance()->listeners().Append(new ShowLogOfFailures);
    }
};

::testing::Environment *const preparation = ::testing::AddGlobalTestEnvironment(new Preparation);

}  // namespace

Workspace &Workspace::ofThisProgram() {
    static Workspace workspace;
    return workspace;
}

Workspace::Workspace() {
    std::filesystem::create_directory(runtimeFolder());
    std::filesystem::permissions(runtimeFolder(), std::filesystem::perms::owner_all);
    setenv("KORVO_RUNTIME_DIR", runtimeFolder().c_str(), 1);
    setenv("KORVO_STATE_DIR", newFolder("state").c_str(), 1);
    setenv("KORVO_LOG_LEVEL", "info", 1);
    unsetenv("KORVO_LOG_TARGET");
}

std::filesystem::path Workspace::newFolder(std::string const &name) {
    auto path = folder() / (name + "-" + std::to_string(++folders_));
    std::filesystem::create_directory(path);
    return path;
}

ErrorOutput &ErrorOutput::ofThisProgram() {
    static ErrorOutput output;
    return output;
}

ErrorOutput::ErrorOutput() : original_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    dup2(ends[1], STDERR_FILENO);
    close(ends[1]);
    stream_ = std::make_unique<TextStream>(Descriptor(ends[0]));
    if (__sanitizer_set_report_fd != nullptr) {
        // The interface takes the number of a descriptor as a pointer.
        __sanitizer_set_report_fd(reinterpret_cast<void *>(static_cast<std::intptr_t>(original_.get())));
    }
}

ErrorOutput::~ErrorOutput() {
    dup2(original_.get(), STDERR_FILENO);
    if (__sanitizer_set_report_fd != nullptr) {
        __sanitizer_set_report_fd(reinterpret_cast<void *>(static_cast<std::intptr_t>(STDERR_FILENO)));
    }
}

void ErrorOutput::settle() {
    std::string const line = marker + std::to_string(++marks_) + "\n";
    (void)!write(STDERR_FILENO, line.data(), line.size());
    if (!stream_->waitFor(line)) {
        ADD_FAILURE() << "standard error is not read any more";
    }
}

std::size_t ErrorOutput::mark() {
    settle();
    return stream_->size();
}

std::string ErrorOutput::since(std::size_t mark) {
    settle();
    std::string text = stream_->text().substr(mark);
    for (auto place = text.find(marker); place != std::string::npos; place = text.find(marker, place)) {
        text.erase(place, text.find('\n', place) - place + 1);
    }
    return text;
}

bool ErrorOutput::waitFor(std::string_view wanted, std::size_t mark, milliseconds limit) const {
    return stream_->waitFor(wanted, mark, limit);
}

}  // namespace end_to_end
